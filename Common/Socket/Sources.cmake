# The socket library itself.
set(VELSOCK_SOCKET_SOURCES
  Socket/Socket/Exception.cpp
  Socket/Socket/FailureText.cpp
  Socket/Socket/LogFormat.cpp
  Socket/Socket/Octets.cpp
  Socket/Socket/OctetsCollection.cpp
  Socket/Socket/Socket.cpp
  Socket/Socket/SocketAddress.cpp
  Socket/Socket/SocketAPI.cpp
  Socket/Socket/SocketImpl.cpp
  Socket/Socket/SocketInitialization.cpp
  Socket/Socket/SocketLayerState.cpp
  Socket/Socket/StartUpLock.cpp
  Socket/Socket/SystemSocket.cpp
  Socket/Socket/TraceRecords.cpp)
