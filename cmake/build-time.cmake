# Writes the C++ file that holds the banner's build time: cmake -DOUT=FILE -DSOURCE=FOLDER -P build-time.cmake
# The time is SOURCE_DATE_EPOCH where the environment has it, else that of the commit, so that the same sources make the
# same program whenever and wherever it is built. Only where neither is known it is the present. Always UTC.
if(NOT DEFINED ENV{SOURCE_DATE_EPOCH} AND EXISTS ${SOURCE}/.git)
  execute_process(COMMAND git -C ${SOURCE} log -1 --format=%ct
    OUTPUT_VARIABLE committed OUTPUT_STRIP_TRAILING_WHITESPACE RESULT_VARIABLE result ERROR_QUIET)
  if(result EQUAL 0)
    # string(TIMESTAMP) takes the time from there.
    set(ENV{SOURCE_DATE_EPOCH} ${committed})
  endif()
endif()
string(TIMESTAMP time "%b %d %Y %H:%M:%S" UTC)
# As the compiler's __DATE__ has it: a day below 10 has a blank before it.
string(REPLACE " 0" "  " day "${time}")
string(SUBSTRING "${day}" 0 6 day)
string(SUBSTRING "${time}" 6 -1 rest)
set(text "#include \"qvrcli/build_time.h\"

namespace gfast::console {
const char* const kBuildTime = \"${day}${rest}\";
}  // namespace gfast::console
")
if(EXISTS ${OUT})
  file(READ ${OUT} before)
endif()
if(NOT text STREQUAL "${before}")
  file(WRITE ${OUT} "${text}")
endif()
