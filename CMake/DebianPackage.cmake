# The .deb that cpack makes of the component Command.
set(CPACK_GENERATOR DEB)
set(CPACK_COMPONENTS_ALL Command)
set(CPACK_COMPONENTS_GROUPING ALL_COMPONENTS_IN_ONE)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_STRIP_FILES ON)

set(CPACK_PACKAGE_NAME corvane)
set(CPACK_PACKAGE_CONTACT Corvane)
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "HTTP requests, downloads and file functions for scripts")
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION
"Calls the functions of the HTTP plug-in Corvane without a game engine: GET,
POST and individual requests, downloads that resume, uploads, server-sent
events and file functions, from Lua scripts and from the command line.")
set(CPACK_DEBIAN_PACKAGE_SECTION web)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_DEPENDS ca-certificates)
set(CPACK_DEBIAN_PACKAGE_SUGGESTS bash-completion)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
include(CPack)
