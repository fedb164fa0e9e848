# Packages of what Install.cmake installs: Debian packages (workflow preset `package`), a zip of the Windows DLLs, their
# import libraries and headers (workflow preset `win32`).
set(CPACK_PACKAGE_NAME KivDSDataU)
set(CPACK_PACKAGE_CONTACT "KivDSDataU maintainers")
set(CPACK_PACKAGE_DIRECTORY "${PROJECT_BINARY_DIR}/packages")
set(CPACK_STRIP_FILES ON)
set(CMAKE_SKIP_INSTALL_ALL_DEPENDENCY ON) # what is packed has been built; packing builds nothing
if(WIN32)
    set(CPACK_GENERATOR ZIP)
    set(CPACK_PACKAGE_FILE_NAME "KivDSDataU-${PROJECT_VERSION}-win32")
    include(CPack)
    return()
endif()

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
# Where our own libraries are, which are not installed.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS "${PROJECT_BINARY_DIR}" "${PROJECT_BINARY_DIR}/dicom")
find_program(DPKG_SHLIBDEPS dpkg-shlibdeps)
find_program(FILE_PROGRAM file)
if(DPKG_SHLIBDEPS AND FILE_PROGRAM)
    set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
else()
    message(STATUS "Debian packages will name no foreign libraries: that needs dpkg-shlibdeps (dpkg-dev) and file")
endif()

# Makes the install component `component` the Debian package `name`.
macro(kivds_debian component name section description)
    string(TOUPPER "${component}" upper)
    list(APPEND CPACK_COMPONENTS_ALL ${component})
    set(CPACK_DEBIAN_${upper}_PACKAGE_NAME ${name})
    set(CPACK_DEBIAN_${upper}_PACKAGE_SECTION ${section})
    set(CPACK_DEBIAN_${upper}_DESCRIPTION "${description}")
    set(CPACK_COMPONENT_${upper}_DEPENDS ${ARGN})
endmacro()

kivds_debian(KivDSDataU libkivdsdatau${PROJECT_VERSION_MAJOR} libs "The library.")
kivds_debian(KivDSDataU_dev libkivdsdatau-dev libdevel "What is needed to build against the library." KivDSDataU)
if(KIVDS_BUILD_DICOM)
    kivds_debian(KivDSDicom libkivdsdicom${PROJECT_VERSION_MAJOR} libs "The adapter that reads DICOM files." KivDSDataU)
    kivds_debian(KivDSDicom_dev libkivdsdicom-dev libdevel "What is needed to build against the adapter."
        KivDSDicom KivDSDataU_dev)
endif()
if(KIVDS_BUILD_TOOLS)
    kivds_debian(tools kivds utils "The command-line tool: imports, shows, compares and checks DICOM files."
        KivDSDicom)
endif()
include(CPack)
