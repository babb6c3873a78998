# The C++ runtime that module and hosts share is shipped with them: with mingw-w64 it is not a part of Windows.
if(MINGW)
  foreach(library libstdc++-6.dll libgcc_s_seh-1.dll libwinpthread-1.dll)
    execute_process(
      COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=${library}
      OUTPUT_VARIABLE path OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
    if(NOT IS_ABSOLUTE "${path}")
      # A compiler on Windows keeps them beside itself.
      get_filename_component(folder ${CMAKE_CXX_COMPILER} DIRECTORY)
      set(path ${folder}/${library})
    endif()
    file(COPY ${path} DESTINATION ${CMAKE_RUNTIME_OUTPUT_DIRECTORY})
    # Their symbols for debuggers are nine tenths of them.
    set(stripped ${PROJECT_BINARY_DIR}/runtime/${library})
    file(MAKE_DIRECTORY ${PROJECT_BINARY_DIR}/runtime)
    execute_process(COMMAND ${CMAKE_STRIP} -o ${stripped} ${path} COMMAND_ERROR_IS_FATAL ANY)
    list(APPEND VELSOCK_RUNTIME_LIBRARIES ${stripped})
  endforeach()
endif()
