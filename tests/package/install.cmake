# Installs the build tree BUILD (configuration CONFIG) into a prefix and moves the prefix to TREE, so that whatever
# remembers where it was installed is found out.
file(REMOVE_RECURSE "${TREE}" "${TREE}.first")
execute_process(COMMAND_ERROR_IS_FATAL ANY OUTPUT_QUIET
    COMMAND ${CMAKE_COMMAND} --install "${BUILD}" --config "${CONFIG}" --prefix "${TREE}.first")
file(RENAME "${TREE}.first" "${TREE}")
