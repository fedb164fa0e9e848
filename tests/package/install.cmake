# Installs the build tree BUILD (configuration CONFIG) into a prefix and moves the prefix to MOVED, so that whatever
# remembers where it was installed is found out.
file(REMOVE_RECURSE "${MOVED}" "${MOVED}.first")
execute_process(COMMAND_ERROR_IS_FATAL ANY OUTPUT_QUIET
    COMMAND ${CMAKE_COMMAND} --install "${BUILD}" --config "${CONFIG}" --prefix "${MOVED}.first")
file(RENAME "${MOVED}.first" "${MOVED}")
