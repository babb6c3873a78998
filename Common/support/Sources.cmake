# The support layer. The services are what the socket layer brings up and logs through; tests put a
# recording substitute in their place.
set(VELSOCK_SUPPORT_BASE_SOURCES
  support/VelBase/ExceptionImpl.cpp
  support/VelBase/LengthLimit.cpp
  support/VelBase/LibraryConversions.cpp
  support/VelBase/Message.cpp
  support/VelBase/ReferenceCounted.cpp
  support/VelBase/ReturnString.cpp
  support/VelBase/ReturnWString.cpp
  support/VelBase/SystemFailure.cpp
  support/VelBase/SystemQueries.cpp
  support/VelBase/TextConversions.cpp
  support/VelBase/TextRoom.cpp
  support/VelBase/WideText.cpp
  support/VelRegistry/Key.cpp
  support/VelRegistry/KeyException.cpp
  support/VelRegistry/KeyList.cpp
  support/VelResource/MessageFormatter.cpp
  support/VelSynch/ReferenceCountedImpl.cpp)

set(VELSOCK_SUPPORT_SERVICE_SOURCES
  support/VelLog/CurrentSink.cpp
  support/VelLog/FileSink.cpp
  support/VelLog/Initializer.cpp
  support/VelLog/LogLine.cpp
  support/VelLog/LogMessage.cpp
  support/VelLog/LogSink.cpp
  support/VelLog/Router.cpp
  support/VelLog/StandardErrorSink.cpp
  support/VelLog/VisibleText.cpp
  support/VelRegistry/Initializer.cpp
  support/VelSynch/Initializer.cpp)
