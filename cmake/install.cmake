# What an installation holds: libraries, public headers, a CMake config package, pkg-config files and the tool.
include(CMakePackageConfigHelpers)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/sipcode)

set(libraries sipcode sipcode_static)
if(TARGET sipcode_host_shared)
    list(APPEND libraries sipcode_host_shared)
endif()
install(TARGETS ${libraries}
    EXPORT sipcode-targets
    PUBLIC_HEADER DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/sipcode)
if(TARGET sipcode_x86_64_v3)
    install(TARGETS sipcode_x86_64_v3
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}/glibc-hwcaps/x86-64-v3 NAMELINK_SKIP)
endif()
install(EXPORT sipcode-targets NAMESPACE sipcode:: DESTINATION ${package_dir})

configure_package_config_file(cmake/sipcode-config.cmake.in ${CMAKE_CURRENT_BINARY_DIR}/cmake/sipcode-config.cmake
    INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/cmake/sipcode-config-version.cmake
    COMPATIBILITY SameMajorVersion)
install(FILES
    ${CMAKE_CURRENT_BINARY_DIR}/cmake/sipcode-config.cmake
    ${CMAKE_CURRENT_BINARY_DIR}/cmake/sipcode-config-version.cmake
    DESTINATION ${package_dir})

# The files find the prefix from their own location, so an installed tree can be moved.
file(RELATIVE_PATH SIPCODE_PC_PREFIX /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
string(REGEX REPLACE "/$" "" SIPCODE_PC_PREFIX ${SIPCODE_PC_PREFIX})
function(install_pkg_config_file name)
    configure_file(cmake/${name}.pc.in ${CMAKE_CURRENT_BINARY_DIR}/cmake/${name}.pc @ONLY)
    install(FILES ${CMAKE_CURRENT_BINARY_DIR}/cmake/${name}.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
endfunction()
install_pkg_config_file(sipcode)

if(TARGET sipcode_host)
    # An executable that links the host need not call any service itself. Naming each one as undefined makes the linker
    # take it from the archive, wherever the archive comes on the command line, and export it to the library.
    set(services
        Str_Atoi Str_Cmp Str_Len Str_N_Cmp Str_N_Cmp_NoCase Str_N_Copy Str_Tok Str_Two_Tok
        Log_Trace_Proc MT_Log_Process Xml_Encode)
    list(TRANSFORM services PREPEND LINKER:-u, OUTPUT_VARIABLE wanted_services)
    target_link_options(sipcode_host INTERFACE ${wanted_services})

    install(TARGETS sipcode_host EXPORT sipcode-host-targets)
    install(EXPORT sipcode-host-targets NAMESPACE sipcode:: DESTINATION ${package_dir})

    list(TRANSFORM services PREPEND -Wl,-u, OUTPUT_VARIABLE SIPCODE_HOST_LINK_FLAGS)
    list(JOIN SIPCODE_HOST_LINK_FLAGS " " SIPCODE_HOST_LINK_FLAGS)
    install_pkg_config_file(sipcode-host)
    install_pkg_config_file(sipcode-host-static)
endif()

if(TARGET sipcode_tool)
    set_target_properties(sipcode_tool PROPERTIES INSTALL_RPATH "\$ORIGIN/../${CMAKE_INSTALL_LIBDIR}")
    install(TARGETS sipcode_tool)
endif()
