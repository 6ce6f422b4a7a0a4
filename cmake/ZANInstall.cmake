# How other projects find the library: find_package(ZANCommon) and pkg-config.
include(CMakePackageConfigHelpers)

set(ZAN_PACKAGE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/ZANCommon)

configure_package_config_file(
    cmake/ZANCommonConfig.cmake.in ${PROJECT_BINARY_DIR}/ZANCommonConfig.cmake
    INSTALL_DESTINATION ${ZAN_PACKAGE_DIR}
    PATH_VARS ZAN_COMPONENT_DIR)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/ZANCommonConfigVersion.cmake
                                 COMPATIBILITY SameMinorVersion) # the ABI
file(RELATIVE_PATH ZAN_PC_TO_PREFIX /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
configure_file(cmake/zancommon.pc.in ${PROJECT_BINARY_DIR}/zancommon.pc @ONLY)
configure_file(cmake/zancommon-server.pc.in ${PROJECT_BINARY_DIR}/zancommon-server.pc @ONLY)
configure_file(cmake/zancommon-broker.pc.in ${PROJECT_BINARY_DIR}/zancommon-broker.pc @ONLY)

install(EXPORT ZANCommonTargets NAMESPACE ZANCommon:: DESTINATION ${ZAN_PACKAGE_DIR})
install(FILES ${PROJECT_BINARY_DIR}/ZANCommonConfig.cmake ${PROJECT_BINARY_DIR}/ZANCommonConfigVersion.cmake
        DESTINATION ${ZAN_PACKAGE_DIR})
install(FILES ${PROJECT_BINARY_DIR}/zancommon.pc ${PROJECT_BINARY_DIR}/zancommon-server.pc
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

install(EXPORT ZANCommonBrokerTargets NAMESPACE ZANCommon:: DESTINATION ${ZAN_PACKAGE_DIR} COMPONENT broker)
install(FILES ${PROJECT_BINARY_DIR}/zancommon-broker.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT broker)

# The guides and the files that they quote, in the folders of the sources, so that the links between them work.
set(ZAN_DOC_DIR ${CMAKE_INSTALL_DATADIR}/doc/libzancommon-dev)
install(FILES README.md CHANGELOG.md CONTRIBUTING.md DESTINATION ${ZAN_DOC_DIR})
install(DIRECTORY docs DESTINATION ${ZAN_DOC_DIR} FILES_MATCHING PATTERN "*.md")
install(DIRECTORY examples DESTINATION ${ZAN_DOC_DIR})
