# Install rules: the libraries with their headers in a tree below include/KivDSDataU, the CMake package with the
# components KivDSDataU (always there), KivDSDicom and tools, and a pkg-config file a library. Everything finds the rest
# from where it lies itself, so an installed tree may be moved.
include(CMakePackageConfigHelpers)

set(package_dir "${CMAKE_INSTALL_LIBDIR}/cmake/KivDSDataU")
set(include_dir "${CMAKE_INSTALL_INCLUDEDIR}/KivDSDataU")

# Installs `targets` as one component of the package.
function(kivds_install component)
    install(TARGETS ${ARGN} EXPORT ${component}Targets COMPONENT ${component}
        FILE_SET HEADERS DESTINATION "${include_dir}" COMPONENT ${component})
    install(EXPORT ${component}Targets NAMESPACE KivDSDataU:: DESTINATION "${package_dir}" COMPONENT ${component})
    foreach(name IN LISTS ARGN)
        get_target_property(type ${name} TYPE)
        if(type STREQUAL "SHARED_LIBRARY")
            get_target_property(requires ${name} KIVDS_REQUIRES)
            list(JOIN requires " " requires)
            file(RELATIVE_PATH prefix_from_pc "/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/")
            configure_file(cmake/module.pc.in "${PROJECT_BINARY_DIR}/${name}.pc" @ONLY)
            install(FILES "${PROJECT_BINARY_DIR}/${name}.pc" DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig"
                COMPONENT ${component})
        endif()
    endforeach()
endfunction()

kivds_install(KivDSDataU KivIPBaseErrorU KivIPPDicomScopeItemU KivIPPBaseScopeU KivDSDataU)
if(KIVDS_BUILD_DICOM)
    kivds_install(KivDSDicom KivDSDicom)
endif()
if(KIVDS_BUILD_TOOLS)
    kivds_install(tools kivds)
endif()

configure_package_config_file(cmake/KivDSDataUConfig.cmake.in "${PROJECT_BINARY_DIR}/KivDSDataUConfig.cmake"
    INSTALL_DESTINATION "${package_dir}")
write_basic_package_version_file("${PROJECT_BINARY_DIR}/KivDSDataUConfigVersion.cmake"
    COMPATIBILITY SameMajorVersion)
install(FILES "${PROJECT_BINARY_DIR}/KivDSDataUConfig.cmake" "${PROJECT_BINARY_DIR}/KivDSDataUConfigVersion.cmake"
    DESTINATION "${package_dir}" COMPONENT KivDSDataU)
