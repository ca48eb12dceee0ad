# The Debian package, built by ./scripts/package with CPack. Its version is
# the project's VERSION above: `--version` prints the version of the
# graphical application installed beside the tool, which the package does
# not know.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME kestrunecli)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_CONTACT "Kestrune CLI maintainers <kestrunecli@example.com>")
set(CPACK_DEBIAN_PACKAGE_MAINTAINER "${CPACK_PACKAGE_CONTACT}")
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION
    "publish Mac applications to a Varnholt Kestrune console
kestrunecli is a command-line tool for administrators of a Varnholt Kestrune
device-management console. It signs in once, proving the credentials with a
live lookup of the organization group, keeps the account in the Secret
Service or in a private file store, and publishes a Mac application (an
installer package, its metadata property list and an optional icon) with one
command.")
set(CPACK_DEBIAN_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_STRIP_FILES ON)
# A Secret Service client loaded on first use is recommended, not required:
# without it the account goes to the file store.
if(TARGET kestrune-secret-service)
  set(CPACK_DEBIAN_PACKAGE_RECOMMENDS libsecret-1-0)
endif()
set(CPACK_DEBIAN_PACKAGE_SUGGESTS "gnome-keyring, libsecret-tools")

if(KESTRUNE_DEBIAN_LAYOUT)
  set(docDir ${CMAKE_INSTALL_DATADIR}/doc/${CPACK_PACKAGE_NAME})
  string(TIMESTAMP changelogDate "%a, %d %b %Y %H:%M:%S +0000" UTC)
  string(TIMESTAMP year "%Y" UTC)
  file(WRITE ${CMAKE_CURRENT_BINARY_DIR}/debian/changelog
"${CPACK_PACKAGE_NAME} (${PROJECT_VERSION}) unstable; urgency=medium

  * Release ${PROJECT_VERSION}.

 -- ${CPACK_PACKAGE_CONTACT}  ${changelogDate}
")
  file(WRITE ${CMAKE_CURRENT_BINARY_DIR}/debian/copyright
"Upstream-Name: kestrunecli
Files: *
Copyright: Copyright (C) ${year} the kestrunecli authors
License: proprietary
 All rights reserved.
")
  add_custom_command(OUTPUT ${CMAKE_CURRENT_BINARY_DIR}/debian/changelog.gz
      COMMAND gzip -9nkf ${CMAKE_CURRENT_BINARY_DIR}/debian/changelog
      DEPENDS ${CMAKE_CURRENT_BINARY_DIR}/debian/changelog VERBATIM)
  add_custom_target(debianChangelog ALL
      DEPENDS ${CMAKE_CURRENT_BINARY_DIR}/debian/changelog.gz)
  install(FILES ${CMAKE_CURRENT_BINARY_DIR}/debian/changelog.gz
                ${CMAKE_CURRENT_BINARY_DIR}/debian/copyright
          DESTINATION ${docDir})
endif()

include(CPack)
