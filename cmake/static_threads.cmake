# Static executables need the C library's thread functions linked by name. libstdc++ and its headers may refer to them
# weakly, which takes no member out of an archive, and a call to what is not there ends the program.
if(NOT CMAKE_CROSSCOMPILING AND NOT CMAKE_EXE_LINKER_FLAGS MATCHES "-static")
  return()
endif()
set(GFAST_STATIC ON)

execute_process(COMMAND ${CMAKE_SOURCE_DIR}/tools/thread-symbols ${CMAKE_CXX_COMPILER} ${CMAKE_READELF}
  OUTPUT_VARIABLE thread_symbols COMMAND_ERROR_IS_FATAL ANY)
string(REGEX MATCHALL "[^\n]+" thread_symbols "${thread_symbols}")
list(TRANSFORM thread_symbols PREPEND LINKER:-u,)
target_link_options(gfast_options INTERFACE ${thread_symbols})

# Every executable is looked at when it is linked. The relocations are for that; stripping removes them.
target_link_options(gfast_options INTERFACE LINKER:--emit-relocs)
list(APPEND CMAKE_CXX_LINK_EXECUTABLE "${CMAKE_SOURCE_DIR}/tools/check-static-symbols ${CMAKE_READELF} <TARGET>")
