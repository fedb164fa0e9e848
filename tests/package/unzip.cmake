# Makes the zip of the build tree BUILD (configuration CONFIG) and unpacks it as TREE.
file(REMOVE_RECURSE "${TREE}" "${TREE}.packages")
execute_process(COMMAND_ERROR_IS_FATAL ANY OUTPUT_QUIET WORKING_DIRECTORY "${BUILD}"
    COMMAND ${CMAKE_CPACK_COMMAND} -G ZIP -C "${CONFIG}" -B "${TREE}.packages")
file(GLOB archive "${TREE}.packages/*.zip")
file(ARCHIVE_EXTRACT INPUT "${archive}" DESTINATION "${TREE}.packages")
cmake_path(GET archive STEM LAST_ONLY folder)
file(RENAME "${TREE}.packages/${folder}" "${TREE}")
