# What lets other projects find the installed library: a CMake package and a pkg-config file.
include(CMakePackageConfigHelpers)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/kxstr)
file(CONFIGURE OUTPUT kxstrConfig.cmake CONTENT "include(\"\${CMAKE_CURRENT_LIST_DIR}/kxstrTargets.cmake\")\n" @ONLY)
write_basic_package_version_file(kxstrConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(EXPORT kxstr NAMESPACE kxstr:: FILE kxstrTargets.cmake DESTINATION ${package_dir} COMPONENT development)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/kxstrConfig.cmake ${CMAKE_CURRENT_BINARY_DIR}/kxstrConfigVersion.cmake
    DESTINATION ${package_dir} COMPONENT development)

# Relative to the file itself, so that the installed tree can be moved.
file(RELATIVE_PATH prefix_from_pc "/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/")
string(REGEX REPLACE "/$" "" prefix_from_pc "${prefix_from_pc}")
configure_file(${CMAKE_CURRENT_LIST_DIR}/kxstr.pc.in kxstr.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/kxstr.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)

file(GLOB pages CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/docs/*.md)
install(FILES ${pages} ${PROJECT_SOURCE_DIR}/README.md TYPE DOC COMPONENT documentation)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/docs/images TYPE DOC COMPONENT documentation OPTIONAL)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/examples TYPE DOC COMPONENT documentation)
