# What is installed, by component, and the Debian packages that CPack makes of the components; ./package makes both.

set(documents ${PROJECT_SOURCE_DIR}/packaging/debian/copyright ${PROJECT_SOURCE_DIR}/packaging/debian/changelog)
set(man_pages ${PROJECT_SOURCE_DIR}/packaging/man)

# The component is a package of this name: its documents, its man pages by section, and what lintian is told of it.
function(install_documents component package)
    install(FILES ${documents} DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${package} COMPONENT ${component})
    foreach(page ${ARGN})
        string(REGEX MATCH "[1-9]$" section ${page})
        install(FILES ${man_pages}/${page} DESTINATION ${CMAKE_INSTALL_MANDIR}/man${section} COMPONENT ${component})
    endforeach()
    set(overrides ${PROJECT_SOURCE_DIR}/packaging/debian/${package}.lintian-overrides)
    if(EXISTS ${overrides})
        install(FILES ${overrides} DESTINATION ${CMAKE_INSTALL_DATADIR}/lintian/overrides
            RENAME ${package} COMPONENT ${component})
    endif()
endfunction()

# Without a RUNPATH: the system's path leads to the device's library.
install(TARGETS r47-console RUNTIME COMPONENT console)
install_documents(console r47-console r47-console.1)
set(completions ${CMAKE_INSTALL_DATADIR}/bash-completion/completions)
install(FILES packaging/bash-completion/r47-console DESTINATION ${completions} COMPONENT console)

set(components console)
if(NOT R47_HAL_LIBRARY)
    install(TARGETS hal LIBRARY DESTINATION ${R47_INSTALL_LIBDIR} COMPONENT virtual_device NAMELINK_SKIP)
    set(sim r47-sim)
    if(TARGET installed-r47-sim)
        set(sim installed-r47-sim)
    endif()
    install(TARGETS ${sim} RUNTIME COMPONENT virtual_device)
    install_documents(virtual_device r47-virtual-device r47-sim.1 r47-journal.5 r47-scenario.5)
    install(FILES packaging/bash-completion/r47-sim DESTINATION ${completions} COMPONENT virtual_device)
    add_custom_target(installed)
    add_dependencies(installed r47-console hal ${sim})
    if(R47_PANEL)
        add_dependencies(installed r47-panel)
        install(TARGETS r47-panel RUNTIME COMPONENT virtual_device)
        install(FILES ${man_pages}/r47-panel.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT virtual_device)
    endif()

    include(CMakePackageConfigHelpers)
    set(package_directory ${CMAKE_INSTALL_LIBDIR}/cmake/r47-hal)
    configure_package_config_file(packaging/hal/r47-hal-config.cmake.in ${PROJECT_BINARY_DIR}/r47-hal-config.cmake
        INSTALL_DESTINATION ${package_directory} PATH_VARS CMAKE_INSTALL_INCLUDEDIR R47_INSTALL_LIBDIR
        NO_CHECK_REQUIRED_COMPONENTS_MACRO)
    write_basic_package_version_file(${PROJECT_BINARY_DIR}/r47-hal-config-version.cmake COMPATIBILITY SameMinorVersion)
    install(FILES ${PROJECT_BINARY_DIR}/r47-hal-config.cmake ${PROJECT_BINARY_DIR}/r47-hal-config-version.cmake
        DESTINATION ${package_directory} COMPONENT console_dev)
    file(RELATIVE_PATH prefix_from_pkgconfig ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
    configure_file(packaging/hal/r47-hal.pc.in ${PROJECT_BINARY_DIR}/r47-hal.pc @ONLY)
    install(FILES ${PROJECT_BINARY_DIR}/r47-hal.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT console_dev)
    install(DIRECTORY hal DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/r47 COMPONENT console_dev FILES_MATCHING PATTERN *.h)
    install_documents(console_dev r47-console-dev)

    # Debian's Python looks there, whatever the prefix's lib is called.
    set(python_packages lib/python3/dist-packages)
    install(DIRECTORY station/r47_station DESTINATION ${python_packages} COMPONENT station
        FILES_MATCHING PATTERN *.py PATTERN py.typed PATTERN __pycache__ EXCLUDE)
    configure_file(packaging/station/METADATA.in ${PROJECT_BINARY_DIR}/METADATA @ONLY)
    install(FILES ${PROJECT_BINARY_DIR}/METADATA packaging/station/entry_points.txt
        DESTINATION ${python_packages}/r47_station-${PROJECT_VERSION}.dist-info COMPONENT station)
    install(FILES station/examples/fleet.py station/examples/production_test.py station/examples/pytest.ini
        DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/python3-r47-station/examples COMPONENT station)
    install_documents(station python3-r47-station)
    list(APPEND components virtual_device console_dev station)
endif()

set(CPACK_GENERATOR DEB)
set(CPACK_COMPONENTS_ALL ${components})
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_PRE_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/cmake/compress_documents.cmake)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SOURCE r47-console)
set(CPACK_DEBIAN_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_PACKAGE_CONTACT "The R47 test console's developers <r47-console@kelvora.example>")

# Those of Debian 12, where all is built: the same packages on every processor, which tests/packages/run.sh holds against
# dpkg-shlibdeps. (CPack's own way to find them wants the libraries of the processor, and an owner for the device's.)
set(runtime "libc6 (>= 2.36), libgcc-s1 (>= 12), libstdc++6 (>= 12)")
if(CMAKE_SYSTEM_PROCESSOR STREQUAL aarch64)
    set(CPACK_DEBIAN_PACKAGE_ARCHITECTURE arm64)
endif()

set(CPACK_DEBIAN_CONSOLE_PACKAGE_NAME r47-console)
set(CPACK_DEBIAN_CONSOLE_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_CONSOLE_PACKAGE_DEPENDS "${runtime}")
set(CPACK_DEBIAN_CONSOLE_PACKAGE_SUGGESTS r47-virtual-device)
set(CPACK_DEBIAN_CONSOLE_DESCRIPTION "interactive test console for the hardware of the R47 smart camera
A service engineer starts it as root on the device and exercises one
component at a time from single-key menus: real-time unit, image sensors,
camera, digital I/O, illumination, autofocus, motion sensor hub, button,
ranging sensor, system state. A test station can drive it over TCP.

The hardware library, libhal.so.2, comes with the device. Elsewhere
r47-virtual-device takes the device's place.")

set(CPACK_DEBIAN_VIRTUAL_DEVICE_PACKAGE_NAME r47-virtual-device)
set(CPACK_DEBIAN_VIRTUAL_DEVICE_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_VIRTUAL_DEVICE_PACKAGE_DEPENDS "bubblewrap, ${runtime}")
if(R47_PANEL)
    string(PREPEND CPACK_DEBIAN_VIRTUAL_DEVICE_PACKAGE_DEPENDS "libcpp-httplib0.11 (>= 0.11.4), ")
endif()
set(CPACK_DEBIAN_VIRTUAL_DEVICE_PACKAGE_RECOMMENDS "proot, r47-console")
set(CPACK_DEBIAN_VIRTUAL_DEVICE_DESCRIPTION "virtual R47 smart camera for its test console
A process that behaves like the camera's hardware, the library through
which programs use it, and r47-sim, which runs programs inside it and
controls it: faults, a stepped clock, scenarios, a journal of all calls.

The library lies in a directory of its own, away from that of a device.")

set(CPACK_DEBIAN_CONSOLE_DEV_PACKAGE_NAME r47-console-dev)
set(CPACK_DEBIAN_CONSOLE_DEV_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_CONSOLE_DEV_PACKAGE_RECOMMENDS r47-virtual-device)
set(CPACK_DEBIAN_CONSOLE_DEV_DESCRIPTION "hardware library's interface of the R47 smart camera
The headers of libhal.so.2, for whoever writes such a library or a tool
that uses one, with a CMake package and a pkg-config file, both called
r47-hal.

A tool is linked with the library of r47-virtual-device, or with another
that it is told.")

set(CPACK_DEBIAN_STATION_PACKAGE_NAME python3-r47-station)
set(CPACK_DEBIAN_STATION_PACKAGE_ARCHITECTURE all)
set(CPACK_DEBIAN_STATION_PACKAGE_SECTION python)
set(CPACK_DEBIAN_STATION_PACKAGE_DEPENDS "python3:any (>= 3.11)")
set(CPACK_DEBIAN_STATION_PACKAGE_RECOMMENDS "python3-pexpect, python3-pytest")
set(CPACK_DEBIAN_STATION_PACKAGE_SUGGESTS "r47-console, r47-virtual-device")
set(station_scripts ${PROJECT_SOURCE_DIR}/packaging/debian/python3-r47-station)
set(CPACK_DEBIAN_STATION_PACKAGE_CONTROL_EXTRA ${station_scripts}/postinst ${station_scripts}/prerm)
set(CPACK_DEBIAN_STATION_DESCRIPTION "test stations for the R47 smart camera, in Python
Drives a test console over TCP or at its terminal, from a test station's
program: its commands as methods, its refusals as exceptions, all typed.
Fixtures for pytest make a production test of it, with a report of what was
measured.

With r47-virtual-device a station is written and tried without a camera.")
include(CPack)
