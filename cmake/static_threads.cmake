# Static executables need the C library's thread functions linked by name. libstdc++ may refer to them weakly, which
# takes no member out of an archive, and a call to what is not there ends the program.
if(NOT CMAKE_CROSSCOMPILING AND NOT CMAKE_EXE_LINKER_FLAGS MATCHES "-static")
  return()
endif()
set(GFAST_STATIC ON)

# Puts the full names of those of the libraries that the compiler has as archives into a list.
function(gfast_archives result)
  set(archives)
  foreach(library ${ARGN})
    execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=lib${library}.a
      OUTPUT_VARIABLE archive OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
    if(IS_ABSOLUTE ${archive})
      list(APPEND archives ${archive})
    endif()
  endforeach()
  set(${result} ${archives} PARENT_SCOPE)
endfunction()

function(gfast_weak_thread_symbols result)
  execute_process(COMMAND ${CMAKE_SOURCE_DIR}/tools/weak-thread-symbols ${CMAKE_READELF} ${ARGN}
    OUTPUT_VARIABLE names COMMAND_ERROR_IS_FATAL ANY)
  string(REGEX MATCHALL "[^\n]+" names "${names}")
  set(${result} ${names} PARENT_SCOPE)
endfunction()

# The names are the archives' own: what the C++ library refers to only weakly and the C library has.
gfast_archives(cxx_archives stdc++ gcc_eh)
gfast_archives(c_archives c pthread)
gfast_weak_thread_symbols(thread_symbols ${cxx_archives})
gfast_weak_thread_symbols(missing_symbols ${cxx_archives} ${c_archives})
list(REMOVE_ITEM thread_symbols ${missing_symbols})
list(TRANSFORM thread_symbols PREPEND LINKER:-u,)
target_link_options(gfast_options INTERFACE ${thread_symbols})

# Every executable is looked at when it is linked. The relocations are for that; stripping removes them.
target_link_options(gfast_options INTERFACE LINKER:--emit-relocs)
list(APPEND CMAKE_CXX_LINK_EXECUTABLE "${CMAKE_SOURCE_DIR}/tools/check-static-symbols ${CMAKE_READELF} <TARGET>")
