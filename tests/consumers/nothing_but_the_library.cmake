# How the library itself was compiled is no business of the programs that link it.
foreach(target gfast-sdk::gfast-sdk gfast-sdk::kernel-driver)
  foreach(property INTERFACE_COMPILE_OPTIONS INTERFACE_COMPILE_DEFINITIONS INTERFACE_COMPILE_FEATURES)
    get_target_property(leaked ${target} ${property})
    if(leaked)
      message(FATAL_ERROR "${target} tells its users ${property} ${leaked}")
    endif()
  endforeach()
endforeach()
