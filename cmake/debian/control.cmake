# cpack runs this before it packs. It makes the library's symbols and shlibs files, which state the dependency of
# programs built against it, and finds the dependencies of the library itself. CPack alone would add maintainer scripts
# that call ldconfig, but Debian wants a trigger.
set(package ${CPACK_DEBIAN_SIPCODE_LIBRARY_PACKAGE_NAME})
set(version ${CPACK_PACKAGE_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE})
set(shared_object ${CPACK_SIPCODE_BUILD_DIR}/Lib_Base/lib_code/libsipcode.so.${CPACK_PACKAGE_VERSION_MAJOR})
set(work ${CPACK_SIPCODE_BUILD_DIR}/debian)
set(control ${work}/${package}/DEBIAN)

file(MAKE_DIRECTORY ${control})
file(WRITE ${work}/debian/control "Source: ${CPACK_DEBIAN_PACKAGE_SOURCE}\n\nPackage: ${package}\nArchitecture: any\n")
file(WRITE ${control}/triggers "activate-noawait ldconfig\n")
file(WRITE ${control}/shlibs
    "libsipcode ${CPACK_PACKAGE_VERSION_MAJOR} ${package} (>= ${CPACK_PACKAGE_VERSION})\n")
# Fails if a name in the committed file is no longer exported, or if an exported name is not in it.
execute_process(
    COMMAND dpkg-gensymbols -c4 -p${package} -v${version} -e${shared_object} -O${control}/symbols
        -I${CMAKE_CURRENT_LIST_DIR}/${package}.symbols -P${work}/${package}
    WORKING_DIRECTORY ${work} COMMAND_ERROR_IS_FATAL ANY)
execute_process(COMMAND dpkg-shlibdeps -O ${shared_object}
    WORKING_DIRECTORY ${work} OUTPUT_VARIABLE depends ERROR_QUIET COMMAND_ERROR_IS_FATAL ANY)
string(REGEX REPLACE "^shlibs:Depends=|\n" "" CPACK_DEBIAN_SIPCODE_LIBRARY_PACKAGE_DEPENDS ${depends})

set(CPACK_DEBIAN_SIPCODE_LIBRARY_PACKAGE_CONTROL_EXTRA ${control}/symbols ${control}/shlibs ${control}/triggers)
set(CPACK_DEBIAN_SIPCODE_TOOL_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CPACK_SIPCODE_BUILD_DIR}/Lib_Base/lib_code)
