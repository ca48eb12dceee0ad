# The Debian package, made by `cpack --preset package` (./scripts/package
# checks it) from a release tree configured for /usr. Its version is
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
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_PACKAGE_SUGGESTS "gnome-keyring, libsecret-tools")
# The documentation in Debian's layout, and Depends and Recommends from
# what the packed files link, are made on the staged files by this script.
set(CPACK_PRE_BUILD_SCRIPTS ${CMAKE_CURRENT_LIST_DIR}/DebianPackage.cmake)

include(CPack)
