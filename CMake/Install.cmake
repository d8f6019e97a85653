# The package that find_package(Corvane) finds: static libraries, headers, the reflection headers of this build.
include(CMakePackageConfigHelpers)

set(package_folder lib/cmake/Corvane)
set_target_properties(CorvaneProgram PROPERTIES EXPORT_NAME Corvane)
set_target_properties(CorvaneTransfersProgram PROPERTIES EXPORT_NAME Transfers)
install(TARGETS CorvaneProgram CorvaneModule CorvaneTransfersProgram CorvaneTransfersModule HostLaunch HostHTTP HostEngine HostCoreUObject HostCore CorvaneBuildOptions
  EXPORT CorvaneTargets ARCHIVE DESTINATION lib/corvane)
install(EXPORT CorvaneTargets NAMESPACE Corvane:: DESTINATION ${package_folder})

install(DIRECTORY Host/Core/Public/ Host/CoreUObject/Public/ Host/Engine/Public/ Host/HTTP/Public/ Host/Launch/
  Source/Corvane/Public/ Source/CorvaneTransfers/Public/ DESTINATION ${CORVANE_INSTALL_HEADERS} FILES_MATCHING PATTERN "*.h")
foreach(target HostEngine CorvaneModule CorvaneTransfersModule)
  get_target_property(binary_folder ${target} BINARY_DIR)
  string(REGEX REPLACE "^Host|Module$" "" module ${target})
  install(DIRECTORY ${binary_folder}/Generated/${module}/ DESTINATION ${CORVANE_INSTALL_HEADERS}
    FILES_MATCHING PATTERN "*.generated.h")
endforeach()

configure_package_config_file(CMake/CorvaneConfig.cmake.in CorvaneConfig.cmake INSTALL_DESTINATION ${package_folder})
write_basic_package_version_file(CorvaneConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/CorvaneConfig.cmake ${CMAKE_CURRENT_BINARY_DIR}/CorvaneConfigVersion.cmake
  DESTINATION ${package_folder})
