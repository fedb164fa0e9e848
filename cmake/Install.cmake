# Install rules: the libraries with their headers in a tree below include/KivDSDataU, the CMake package with the
# components KivDSDataU (always there), KivDSDicom and tools, and a pkg-config file a library; what debuggers need; the
# tool's manual page and completion. Everything finds the rest from where it lies itself, so an installed tree may be moved.
# A library is installed apart from what is needed to build against it: Package.cmake makes packages of each.
include(CMakePackageConfigHelpers)

set(package_dir "${CMAKE_INSTALL_LIBDIR}/cmake/KivDSDataU")
set(include_dir "${CMAKE_INSTALL_INCLUDEDIR}/KivDSDataU")

# Installs the targets ARGN as one component of the CMake package: what runs as the install component of the same name, the
# rest as the install component `dev`.
function(kivds_install component dev)
    install(TARGETS ${ARGN} EXPORT ${component}Targets
        RUNTIME COMPONENT ${component}
        LIBRARY COMPONENT ${component} NAMELINK_COMPONENT ${dev}
        ARCHIVE COMPONENT ${dev}
        FILE_SET HEADERS DESTINATION "${include_dir}" COMPONENT ${dev})
    install(EXPORT ${component}Targets NAMESPACE KivDSDataU:: DESTINATION "${package_dir}" COMPONENT ${dev})
    foreach(name IN LISTS ARGN)
        get_target_property(type ${name} TYPE)
        if(type STREQUAL "SHARED_LIBRARY")
            get_target_property(requires ${name} KIVDS_REQUIRES)
            list(JOIN requires " " requires)
            file(RELATIVE_PATH prefix_from_pc "/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/")
            configure_file(cmake/module.pc.in "${PROJECT_BINARY_DIR}/${name}.pc" @ONLY)
            install(FILES "${PROJECT_BINARY_DIR}/${name}.pc" DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig"
                COMPONENT ${dev})
        endif()
    endforeach()
endfunction()

kivds_install(KivDSDataU KivDSDataU_dev KivIPBaseErrorU KivIPPDicomScopeItemU KivIPPBaseScopeU KivDSDataU)
if(KIVDS_BUILD_DICOM)
    kivds_install(KivDSDicom KivDSDicom_dev KivDSDicom)
endif()
if(KIVDS_BUILD_TOOLS)
    kivds_install(tools tools kivds)
    install(FILES tools/kivds.1 DESTINATION "${CMAKE_INSTALL_MANDIR}/man1" COMPONENT tools)
    install(FILES tools/kivds.bash DESTINATION "${CMAKE_INSTALL_DATADIR}/bash-completion/completions" RENAME kivds
        COMPONENT tools)
endif()

configure_package_config_file(cmake/KivDSDataUConfig.cmake.in "${PROJECT_BINARY_DIR}/KivDSDataUConfig.cmake"
    INSTALL_DESTINATION "${package_dir}")
write_basic_package_version_file("${PROJECT_BINARY_DIR}/KivDSDataUConfigVersion.cmake"
    COMPATIBILITY SameMajorVersion)
install(FILES "${PROJECT_BINARY_DIR}/KivDSDataUConfig.cmake" "${PROJECT_BINARY_DIR}/KivDSDataUConfigVersion.cmake"
    DESTINATION "${package_dir}" COMPONENT KivDSDataU_dev)
install(FILES README.md CHANGELOG.md docs/windows.md DESTINATION "${CMAKE_INSTALL_DOCDIR}" COMPONENT KivDSDataU_dev)

# GDB loads by itself what is named after the library and lies in this folder below its data.
install(FILES debug/KivDSDataU.natvis DESTINATION "${CMAKE_INSTALL_DATADIR}/KivDSDataU" COMPONENT KivDSDataU_dev)
if(NOT WIN32)
    install(FILES debug/kivdsdatau_gdb.py RENAME "libKivDSDataU.so.${PROJECT_VERSION}-gdb.py"
        DESTINATION "${CMAKE_INSTALL_DATADIR}/gdb/auto-load/${CMAKE_INSTALL_FULL_LIBDIR}" COMPONENT KivDSDataU_dev)
endif()
