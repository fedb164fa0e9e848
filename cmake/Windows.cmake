# What a shared library needs on Windows besides. docs/windows.md says why.

# Names the DLL as its callers load it, gives it a version resource, and links the compiler's runtime into it, so that it
# imports from the system and its sibling modules alone.
function(kivds_windows_dll name description)
    set_target_properties(${name} PROPERTIES PREFIX "")
    configure_file("${PROJECT_SOURCE_DIR}/cmake/module.rc.in" "${PROJECT_BINARY_DIR}/${name}.rc" @ONLY)
    target_sources(${name} PRIVATE "${PROJECT_BINARY_DIR}/${name}.rc")
    if(MINGW)
        target_link_options(${name} PRIVATE -static)
        if(CMAKE_SIZEOF_VOID_P EQUAL 4)
            target_sources(${name} PRIVATE "${PROJECT_SOURCE_DIR}/platform/internal/UnwindTables.cpp")
        endif()
    endif()
endfunction()

# Copies the compiler's runtime DLLs beside the programs that are built here with the compiler's default options.
function(kivds_copy_runtime_dlls)
    foreach(dll IN ITEMS libgcc_s_dw2-1.dll libstdc++-6.dll libwinpthread-1.dll)
        execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=${dll}
            OUTPUT_VARIABLE path OUTPUT_STRIP_TRAILING_WHITESPACE)
        if(IS_ABSOLUTE "${path}")
            file(COPY "${path}" DESTINATION "${CMAKE_RUNTIME_OUTPUT_DIRECTORY}")
        endif()
    endforeach()
endfunction()
