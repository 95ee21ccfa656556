# Installs one COMPONENT of the build folder BUILD into the folder TREE, where nothing of before is left.
file(REMOVE_RECURSE ${TREE})
execute_process(
  COMMAND ${CMAKE_COMMAND} --install ${BUILD} --prefix ${TREE} --component ${COMPONENT}
  COMMAND_ERROR_IS_FATAL ANY)
