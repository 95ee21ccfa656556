# Files that are compiled together share their headers: eight take about half the time, twenty-four a third. Each file by
# itself shows what it forgets to include, and only what has changed is compiled again.
set(GFAST_TOGETHER tests CACHE STRING "What is compiled several files at a time: none, tests or all")
set_property(CACHE GFAST_TOGETHER PROPERTY STRINGS none tests all)

set(files_at_a_time 8)
if(GFAST_TOGETHER STREQUAL all)
  set(files_at_a_time 24)
  # What one file declares is no name of the next one's.
  target_compile_options(gfast_options INTERFACE -Wno-shadow)
endif()

# compile_together(<target>...): names in unnamed namespaces of a target's files differ.
function(compile_together)
  set_target_properties(${ARGN} PROPERTIES UNITY_BUILD ON UNITY_BUILD_BATCH_SIZE ${files_at_a_time})
  if(CMAKE_CXX_COMPILER_ID STREQUAL GNU)
    foreach(target ${ARGN})
      # It takes a file that is compiled together with others for a header.
      target_compile_options(${target} PRIVATE -Wno-subobject-linkage)
    endforeach()
  endif()
endfunction()
