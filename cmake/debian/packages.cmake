# Debian packages by CPack, one for each installed component: libsipcode1, libsipcode-dev and sipcode. Version and
# maintainer come from the changelog in this directory. scripts/package builds them.
file(READ ${CMAKE_CURRENT_LIST_DIR}/changelog changelog)
if(NOT changelog MATCHES "^sipcode \\(${PROJECT_VERSION}-([0-9]+)\\)")
    message(FATAL_ERROR "cmake/debian/changelog does not begin with version ${PROJECT_VERSION}")
endif()
set(CPACK_DEBIAN_PACKAGE_RELEASE ${CMAKE_MATCH_1})
string(REGEX MATCH "\n -- ([^\n]*>)" _ "${changelog}")
set(CPACK_PACKAGE_CONTACT ${CMAKE_MATCH_1})

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME ${PROJECT_NAME})
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "") # otherwise it precedes each component's own
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SOURCE ${PROJECT_NAME})
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

set(CPACK_COMPONENTS_ALL sipcode_library sipcode_development)
set(CPACK_DEBIAN_SIPCODE_LIBRARY_PACKAGE_NAME libsipcode${PROJECT_VERSION_MAJOR})
set(CPACK_DEBIAN_SIPCODE_LIBRARY_PACKAGE_SECTION libs)
set(CPACK_COMPONENT_SIPCODE_LIBRARY_DESCRIPTION "SIP message codec: text to one fixed record and back
A C library that turns the text of a SIP message into one fixed record, and
such a record into the text of a SIP message. It allocates nothing and takes
eleven services from the process that loads it.
.
This package holds the shared library.")

set(CPACK_DEBIAN_SIPCODE_DEVELOPMENT_PACKAGE_NAME libsipcode-dev)
set(CPACK_DEBIAN_SIPCODE_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_COMPONENT_SIPCODE_DEVELOPMENT_DEPENDS sipcode_library)
set(CPACK_DEBIAN_SIPCODE_DEVELOPMENT_PACKAGE_RECOMMENDS "libspdlog-dev, libpugixml-dev")
set(CPACK_COMPONENT_SIPCODE_DEVELOPMENT_DESCRIPTION "SIP message codec: development files
A C library that turns the text of a SIP message into one fixed record, and
such a record into the text of a SIP message.
.
This package holds the headers, the static library, manual pages, files for
pkg-config and CMake, and the reference host, which gives the library the
services that it needs from its process. The reference host needs the
recommended packages.")

if(TARGET sipcode_tool)
    list(APPEND CPACK_COMPONENTS_ALL sipcode_tool)
    set(CPACK_DEBIAN_SIPCODE_TOOL_PACKAGE_NAME sipcode)
    set(CPACK_DEBIAN_SIPCODE_TOOL_PACKAGE_SECTION net)
    set(CPACK_COMPONENT_SIPCODE_TOOL_DEPENDS sipcode_library)
    set(CPACK_COMPONENT_SIPCODE_TOOL_DESCRIPTION "SIP message codec: command-line tool
Decodes SIP messages into records, as text or JSON, writes the messages of
such records, and writes the answer to a request.")
endif()

# What CPack cannot express in variables is done when it runs.
set(CPACK_PROJECT_CONFIG_FILE ${CMAKE_CURRENT_LIST_DIR}/control.cmake)
set(CPACK_PRE_BUILD_SCRIPTS ${CMAKE_CURRENT_LIST_DIR}/documents.cmake)
set(CPACK_SIPCODE_SOURCE_DIR ${PROJECT_SOURCE_DIR})
set(CPACK_SIPCODE_BUILD_DIR ${PROJECT_BINARY_DIR})
include(CPack)
