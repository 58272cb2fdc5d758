# Installs the core so that hosts and plug-ins do find_package(VantelCore) and link Vantel::Core.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

function(vantel_install_core target)
    install(TARGETS ${target} EXPORT VantelCoreTargets
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
        RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
        ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
    install(DIRECTORY ${CMAKE_CURRENT_SOURCE_DIR}/include/Vantel
        DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
    install(FILES ${CMAKE_CURRENT_BINARY_DIR}/include/Vantel/Export.h
        DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/Vantel)
    install(EXPORT VantelCoreTargets
        NAMESPACE Vantel::
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/VantelCore)

    set(config_dir ${CMAKE_CURRENT_BINARY_DIR}/package)
    configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/VantelCoreConfig.cmake.in
        ${config_dir}/VantelCoreConfig.cmake
        INSTALL_DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/VantelCore)
    write_basic_package_version_file(${config_dir}/VantelCoreConfigVersion.cmake
        VERSION ${PROJECT_VERSION} COMPATIBILITY SameMajorVersion)
    install(FILES ${config_dir}/VantelCoreConfig.cmake ${config_dir}/VantelCoreConfigVersion.cmake
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/VantelCore)
endfunction()
