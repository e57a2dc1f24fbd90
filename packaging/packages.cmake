# The packages: TaVekUtil-VERSION-SYSTEM.{tar.gz,zip} and tavekutil_VERSION_ARCHITECTURE.deb, made by `cpack`.
set(CPACK_PACKAGE_NAME ${PROJECT_NAME})
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_VENDOR "The TaVekUtil developers")
set(CPACK_PACKAGE_CONTACT "The TaVekUtil developers <tavekutil@localhost>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "Edits sensor upgrade archives")
set(CPACK_PACKAGE_DIRECTORY ${CMAKE_BINARY_DIR}/packages)
set(CPACK_RESOURCE_FILE_LICENSE ${PROJECT_SOURCE_DIR}/LICENSE)
set(CPACK_STRIP_FILES ON)
set(CPACK_VERBATIM_VARIABLES ON)

if(WIN32)
  set(CPACK_GENERATOR ZIP)
  set(CPACK_SYSTEM_NAME win64)
else()
  set(CPACK_GENERATOR DEB TGZ)
  set(CPACK_SYSTEM_NAME linux-${CMAKE_SYSTEM_PROCESSOR})
endif()

set(CPACK_PACKAGING_INSTALL_PREFIX /)
set(CPACK_DEBIAN_PACKAGE_NAME tavekutil)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_DEPENDS "tar (>= 1.23)")
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION
  "Injects add-on packages and libraries into the upgrade archives of a
sensor family, removes them again, and keeps the start-up script and the
package manifest of each archive in step.")
set(CPACK_PROJECT_CONFIG_FILE ${CMAKE_CURRENT_LIST_DIR}/generator_settings.cmake)
include(CPack)
