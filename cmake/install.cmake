# What is installed, by component, and the Debian package of each:
#   library      libsurveillance0      the shared library
#   development  libsurveillance-dev   headers, the files of find_package and pkg-config, documents, example hosts
#   host         survhost              the reference host, its manual and example days
include(CMakePackageConfigHelpers)

# An installation or a package builds no tests.
set(CMAKE_SKIP_INSTALL_ALL_DEPENDENCY ON)

set(cmake_dir ${CMAKE_INSTALL_LIBDIR}/cmake/surveillance)
set(pkgconfig_dir ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
file(RELATIVE_PATH prefix_from_pkgconfig /${pkgconfig_dir} /)

install(TARGETS surveillance EXPORT surveillanceTargets
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT library NAMELINK_COMPONENT development)
install(DIRECTORY include/surveillance DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT development)
install(EXPORT surveillanceTargets NAMESPACE surveillance:: DESTINATION ${cmake_dir} COMPONENT development)
configure_package_config_file(cmake/surveillanceConfig.cmake.in surveillanceConfig.cmake
    INSTALL_DESTINATION ${cmake_dir})
write_basic_package_version_file(surveillanceConfigVersion.cmake COMPATIBILITY SameMajorVersion)
configure_file(cmake/surveillance.pc.in surveillance.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/surveillanceConfig.cmake ${PROJECT_BINARY_DIR}/surveillanceConfigVersion.cmake
    DESTINATION ${cmake_dir} COMPONENT development)
install(FILES ${PROJECT_BINARY_DIR}/surveillance.pc DESTINATION ${pkgconfig_dir} COMPONENT development)
if(NOT PROJECT_IS_TOP_LEVEL)
    return()
endif()

set(dev_docs ${CMAKE_INSTALL_DATADIR}/doc/libsurveillance-dev)
install(FILES README.md ARCHITECTURE.md CHANGELOG.md DESTINATION ${dev_docs} COMPONENT development)
install(DIRECTORY docs DESTINATION ${dev_docs} COMPONENT development)
install(DIRECTORY examples/host/ DESTINATION ${dev_docs}/examples COMPONENT development
    PATTERN __pycache__ EXCLUDE)

# survhost finds its example days beside itself, installed or not.
file(MAKE_DIRECTORY ${PROJECT_BINARY_DIR}/${CMAKE_INSTALL_DATADIR}/survhost)
file(CREATE_LINK ${PROJECT_SOURCE_DIR}/examples ${PROJECT_BINARY_DIR}/${CMAKE_INSTALL_DATADIR}/survhost/examples SYMBOLIC)
install(DIRECTORY examples/ DESTINATION ${CMAKE_INSTALL_DATADIR}/survhost/examples COMPONENT host
    PATTERN host EXCLUDE)
install(FILES host/survhost.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT host)
install(FILES host/completion.bash DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions RENAME survhost
    COMPONENT host)

set(packages library=libsurveillance0 development=libsurveillance-dev host=survhost)
foreach(package ${packages})
    string(REGEX MATCH "(.*)=(.*)" package ${package})
    install(FILES LICENSE DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${CMAKE_MATCH_2} RENAME copyright
        COMPONENT ${CMAKE_MATCH_1})
    string(TOUPPER ${CMAKE_MATCH_1} component)
    set(CPACK_DEBIAN_${component}_PACKAGE_NAME ${CMAKE_MATCH_2})
endforeach()

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_DIRECTORY ${PROJECT_BINARY_DIR}/packages)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_PACKAGE_VENDOR "The surveillance authors")
set(CPACK_PACKAGE_CONTACT "The surveillance authors <authors@surveillance.invalid>")
set(CPACK_STRIP_FILES ON)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_LIBRARY_OUTPUT_DIRECTORY})
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY =)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_HOST_PACKAGE_SECTION utils)
set(CPACK_COMPONENT_LIBRARY_DESCRIPTION "Risk surveillance of orders, as a shared library for an order-routing host.")
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION "Headers and example hosts of the surveillance library, for C++, C and Python.")
set(CPACK_COMPONENT_HOST_DESCRIPTION "The reference host of the surveillance library: replays days, imports exchange files.")
set(CPACK_COMPONENTS_ALL library development host)
set(CPACK_COMPONENT_DEVELOPMENT_DEPENDS library)
set(CPACK_COMPONENT_HOST_DEPENDS library)
include(CPack)
