# The libraries for other tools of the chain: what `find_package(tomex)` finds.
#
# Installed are the libraries from the lowest room up to the archive library, with their public
# headers below include/tomex, so that a user writes the same #include lines as this project
# itself:
#
#     find_package(tomex 1.0 REQUIRED)
#     target_link_libraries(program PRIVATE tomex::arlib)
#
# See examples/linking for a program that does so.
include(CMakePackageConfigHelpers)

set(packagedTargets alloclib platform elfext_containers attributes elfext arlib)
set(packagedFolders alloclib platform attributes elfext arlib)
set(packageFolder ${CMAKE_INSTALL_LIBDIR}/cmake/tomex)

foreach(target IN LISTS packagedTargets)
    target_include_directories(${target} INTERFACE
        $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}/tomex>)
    target_compile_definitions(${target} INTERFACE $<INSTALL_INTERFACE:_FILE_OFFSET_BITS=64>)
    target_compile_features(${target} INTERFACE cxx_std_20)
endforeach()

install(TARGETS ${packagedTargets} EXPORT tomexTargets
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}/tomex COMPONENT development)
foreach(folder IN LISTS packagedFolders)
    install(DIRECTORY ${folder}/interface
        DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/tomex/${folder} COMPONENT development
        FILES_MATCHING PATTERN "*.h")
endforeach()

install(EXPORT tomexTargets NAMESPACE tomex:: DESTINATION ${packageFolder} COMPONENT development)
configure_package_config_file(cmake/tomexConfig.cmake.in
    ${CMAKE_CURRENT_BINARY_DIR}/tomexConfig.cmake INSTALL_DESTINATION ${packageFolder})
write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/tomexConfigVersion.cmake
    COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/tomexConfig.cmake
    ${CMAKE_CURRENT_BINARY_DIR}/tomexConfigVersion.cmake
    DESTINATION ${packageFolder} COMPONENT development)
