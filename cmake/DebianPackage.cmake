# Run by CPack once the package's files are staged and before the .deb is
# made of them (CPACK_PRE_BUILD_SCRIPTS). It does the two things that CPack
# has no variable for:
#
# - Debian's layout of the documentation: the manual page compressed, and a
#   changelog and a copyright file under /usr/share/doc/<package>. The build
#   tree itself installs the plain page that `cmake --install` and the tests
#   read, so one tree serves both.
# - The package's relations. CPACK_DEBIAN_PACKAGE_SHLIBDEPS would put what
#   every ELF file of the package needs into Depends. But the tool loads the
#   Secret Service module only when a Secret Service is reachable and falls
#   back to the file store without it, so what that module alone needs is
#   recommended, not required. dpkg-shlibdeps is therefore asked twice, on
#   the files as they are packed: once for the tool and its other modules
#   (Depends), once for that module (Recommends, less what Depends names).
#   The variables set here are the ones the DEB generator reads next.

# CPack reads this file without the project's policies.
cmake_policy(PUSH)
cmake_policy(VERSION 3.25)

set(staged ${CPACK_TEMPORARY_DIRECTORY})
set(docDir ${staged}${CPACK_PACKAGING_INSTALL_PREFIX}/share/doc/${CPACK_PACKAGE_NAME})

function(gzipInPlace file)
  execute_process(COMMAND gzip -9nf ${file} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

file(GLOB_RECURSE manPages
     ${staged}${CPACK_PACKAGING_INSTALL_PREFIX}/share/man/*.[1-9])
foreach(page ${manPages})
  gzipInPlace(${page})
endforeach()

# Dated from SOURCE_DATE_EPOCH when it is set, so that two builds of one
# commit give the same files.
string(TIMESTAMP changelogDate "%a, %d %b %Y %H:%M:%S +0000" UTC)
string(TIMESTAMP year "%Y" UTC)
file(WRITE ${docDir}/changelog
"${CPACK_PACKAGE_NAME} (${CPACK_PACKAGE_VERSION}) unstable; urgency=medium

  * Release ${CPACK_PACKAGE_VERSION}.

 -- ${CPACK_PACKAGE_CONTACT}  ${changelogDate}
")
gzipInPlace(${docDir}/changelog)
file(WRITE ${docDir}/copyright
"Upstream-Name: ${CPACK_PACKAGE_NAME}
Files: *
Copyright: Copyright (C) ${year} the ${CPACK_PACKAGE_NAME} authors
License: proprietary
 All rights reserved.
")

# The ELF files of the package: the tool, and each module apart.
file(GLOB_RECURSE candidates LIST_DIRECTORIES false ${staged}/*)
set(required)
set(optional)
foreach(file ${candidates})
  file(READ ${file} magic LIMIT 4 HEX)
  if(NOT magic STREQUAL "7f454c46")
    continue()
  endif()
  file(RELATIVE_PATH relative ${staged} ${file})
  if(relative MATCHES "/kestrune-secret-service\\.so$")
    list(APPEND optional ${relative})
  else()
    list(APPEND required ${relative})
  endif()
endforeach()

# dpkg-shlibdeps wants to run beside a debian/control, which the staged
# files must not contain; it prints the packages, with the version bounds
# of their shlibs and symbols files, as "shlibs:Depends=a (>= 1), b".
set(shlibdepsDir ${CPACK_TOPLEVEL_DIRECTORY}/shlibdeps)
file(WRITE ${shlibdepsDir}/debian/control "")
function(neededPackages out)
  list(TRANSFORM ARGN PREPEND ${staged}/)
  execute_process(COMMAND dpkg-shlibdeps -O --ignore-missing-info ${ARGN}
                  WORKING_DIRECTORY ${shlibdepsDir}
                  OUTPUT_VARIABLE line ERROR_VARIABLE errors
                  RESULT_VARIABLE status OUTPUT_STRIP_TRAILING_WHITESPACE)
  if(NOT status EQUAL 0)
    message(FATAL_ERROR "dpkg-shlibdeps failed:\n${errors}")
  endif()
  string(REGEX REPLACE "^shlibs:Depends=" "" line "${line}")
  string(REPLACE ", " ";" packages "${line}")
  set(${out} ${packages} PARENT_SCOPE)
endfunction()

neededPackages(depends ${required})
set(recommends)
if(optional)
  neededPackages(moduleNeeds ${optional})
  set(dependedNames ${depends})
  list(TRANSFORM dependedNames REPLACE " .*" "")
  foreach(package ${moduleNeeds})
    string(REGEX REPLACE " .*" "" name "${package}")
    if(NOT name IN_LIST dependedNames)
      list(APPEND recommends ${package})
    endif()
  endforeach()
endif()
list(JOIN depends ", " CPACK_DEBIAN_PACKAGE_DEPENDS)
list(JOIN recommends ", " CPACK_DEBIAN_PACKAGE_RECOMMENDS)

cmake_policy(POP)
