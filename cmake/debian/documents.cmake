# cpack runs this in the tree of files to pack. It compresses manual pages and changelogs, and puts changelogs and the
# copyright file where Debian expects them.
function(run)
    execute_process(COMMAND ${ARGV} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

foreach(component IN LISTS CPACK_COMPONENTS_ALL)
    string(TOUPPER CPACK_DEBIAN_${component}_PACKAGE_NAME package)
    set(tree ${CPACK_TEMPORARY_DIRECTORY}/${component}/usr/share)
    set(documents ${tree}/doc/${${package}})

    file(GLOB pages ${tree}/man/man*/*.[0-9])
    run(install -Dm644 ${CPACK_SIPCODE_SOURCE_DIR}/LICENSE ${documents}/copyright)
    run(install -m644 ${CPACK_SIPCODE_SOURCE_DIR}/CHANGELOG.md ${documents}/changelog)
    run(install -m644 ${CMAKE_CURRENT_LIST_DIR}/changelog ${documents}/changelog.Debian)
    run(gzip -9n ${pages} ${documents}/changelog ${documents}/changelog.Debian)
    if(component STREQUAL sipcode_development)
        run(install -Dm644 ${CPACK_SIPCODE_SOURCE_DIR}/examples/decode.c ${documents}/examples/decode.c)
    endif()
endforeach()
