# How every target of ours is built, and how a shared library of ours is made.
include(GNUInstallDirs)
include(CheckIPOSupported)
include("${CMAKE_CURRENT_LIST_DIR}/Windows.cmake")

# Optimised builds are optimised across source files: attributes and collections call each other for every element.
check_ipo_supported(RESULT kivds_ipo OUTPUT kivds_ipo_output LANGUAGES CXX)

# The options that all our own targets share: C++17 without extensions, only what is marked is exported, warnings,
# sanitizers, and libraries that are found next to the program wherever the tree is installed.
function(kivds_configure target)
    target_compile_features(${target} PUBLIC cxx_std_17)
    set_target_properties(${target} PROPERTIES
        CXX_EXTENSIONS OFF
        CXX_VISIBILITY_PRESET hidden
        VISIBILITY_INLINES_HIDDEN ON
        POSITION_INDEPENDENT_CODE ON
        INTERPROCEDURAL_OPTIMIZATION_RELEASE "${kivds_ipo}"
        INSTALL_RPATH "\$ORIGIN;\$ORIGIN/../${CMAKE_INSTALL_LIBDIR}")
    if(MSVC)
        target_compile_options(${target} PRIVATE /W4 /utf-8 $<$<BOOL:${KIVDS_WERROR}>:/WX>)
    else()
        target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wconversion -Wshadow
            # The part class declares operations of its facade's names with other parameters on purpose.
            $<$<CXX_COMPILER_ID:Clang>:-Wno-overloaded-virtual>
            # The library calls its own functions, whatever another module of the process exports by their names.
            $<$<CXX_COMPILER_ID:GNU>:-fno-semantic-interposition>
            $<$<BOOL:${KIVDS_WERROR}>:-Werror>)
    endif()
    if(KIVDS_SANITIZE)
        set(flags -fsanitize=${KIVDS_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
        target_compile_options(${target} PRIVATE ${flags})
        target_link_options(${target} PRIVATE ${flags})
    endif()
endfunction()

# Makes the shared library `name`, alias KivDSDataU::name, of the lists `name`_SOURCES and `name`_HEADERS. Headers are
# included by their path from the root, and installed in the same tree below include/KivDSDataU.
function(kivds_add_module name build_macro)
    cmake_parse_arguments(PARSE_ARGV 2 arg "" "" "LINK")
    add_library(${name} SHARED ${${name}_SOURCES})
    add_library(KivDSDataU::${name} ALIAS ${name})
    target_sources(${name} PUBLIC FILE_SET HEADERS BASE_DIRS "${PROJECT_SOURCE_DIR}" FILES ${${name}_HEADERS})
    target_compile_definitions(${name} PRIVATE ${build_macro})
    target_link_libraries(${name} PUBLIC ${arg_LINK} PRIVATE Threads::Threads)
    set_target_properties(${name} PROPERTIES
        VERSION ${PROJECT_VERSION}
        SOVERSION ${PROJECT_VERSION_MAJOR}
        KIVDS_REQUIRES "${arg_LINK}")
    kivds_configure(${name})
    if(WIN32)
        kivds_windows_dll(${name} "${${name}_DESCRIPTION}")
    elseif(CMAKE_SYSTEM_NAME STREQUAL "Linux" AND NOT KIVDS_SANITIZE)
        target_link_options(${name} PRIVATE -Wl,--no-undefined) # a module names all the modules it needs
    endif()
endfunction()
