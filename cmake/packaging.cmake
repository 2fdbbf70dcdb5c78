# What is installed besides programs and libraries, and the packages that cpack makes: a zip and an installer for Windows, packages for
# Debian (VOREL_DEBIAN). tools/release.sh makes them all.
set(VOREL_SIGN_WITH "" CACHE FILEPATH "PKCS#12 file with the key that signs Windows files; its password is in the environment: VOREL_SIGN_PASSWORD")

if(WIN32)
  set(documents doc)
  set(declarations_folder declarations)
  set(samples_folder samples)
else()
  set(documents ${CMAKE_INSTALL_DOCDIR})
  set(declarations_folder ${CMAKE_INSTALL_DATADIR}/vorel32/declarations)
  set(samples_folder ${CMAKE_INSTALL_DOCDIR}/examples)
endif()

# The documents as they are in the source, and the manual if the target `manual` has made it.
set(VOREL_MANUAL ${PROJECT_BINARY_DIR}/manual CACHE PATH "Folder of the finished manual: html/ and vorel32.pdf")
install(FILES ${PROJECT_SOURCE_DIR}/README.md ${PROJECT_SOURCE_DIR}/CHANGELOG.md ${PROJECT_SOURCE_DIR}/SECURITY.md
        DESTINATION ${documents} COMPONENT development)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/docs DESTINATION ${documents} COMPONENT development PATTERN manual EXCLUDE PATTERN "*.sh" EXCLUDE)
install(DIRECTORY ${VOREL_MANUAL}/html DESTINATION ${documents}/manual COMPONENT development OPTIONAL)
install(FILES ${VOREL_MANUAL}/vorel32.pdf DESTINATION ${documents}/manual COMPONENT development OPTIONAL)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/samples/ DESTINATION ${samples_folder} COMPONENT development)
install(FILES ${VOREL_DECLARATIONS} DESTINATION ${declarations_folder} COMPONENT development)

# Debian's packages whose headers are compiled in, and those whose scripts and styles the manual's pages have.
set(header_packages fmt=libfmt-dev cli11=libcli11-dev json=nlohmann-json3-dev)
foreach(package furo node-normalize.css python3-sphinx-copybutton sphinx-basic-ng sphinx-common)
  if(EXISTS /usr/share/doc/${package}/copyright)
    list(APPEND manual_packages manual-${package}=${package})
  endif()
endforeach()

# vorel_install_licences(FOLDER COMPONENT NAME=PACKAGE...): the licences of Debian's packages, as FOLDER/NAME.txt.
function(vorel_install_licences folder component)
  foreach(licence IN LISTS ARGN)
    string(REPLACE = ";" licence ${licence})
    list(GET licence 0 name)
    list(GET licence 1 package)
    install(FILES /usr/share/doc/${package}/copyright DESTINATION ${folder} RENAME ${name}.txt COMPONENT ${component})
  endforeach()
endfunction()

set(CPACK_PACKAGE_VENDOR "The Vorel32 authors")
set(CPACK_PACKAGE_CONTACT "The Vorel32 authors <vorel32@example.org>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${PROJECT_DESCRIPTION}")
set(CPACK_PACKAGE_DIRECTORY ${PROJECT_BINARY_DIR}/packages)
set(CPACK_RESOURCE_FILE_LICENSE ${PROJECT_SOURCE_DIR}/LICENSE)
set(CPACK_VERBATIM_VARIABLES ON)
set(CPACK_PRE_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/cmake/pack/prepare.cmake)
set(CPACK_POST_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/cmake/pack/finish.cmake)
set(CPACK_VOREL_SIGN_WITH "${VOREL_SIGN_WITH}")
set(CPACK_STRIP_FILES ON)
if(WIN32)
  # Everything that is linked into the files: the project's own licence, the codecs', the headers', the run-time libraries'.
  install(FILES ${PROJECT_SOURCE_DIR}/LICENSE DESTINATION licences RENAME vorel32.txt COMPONENT library)
  file(GLOB codecs ${VOREL_CODECS}/licences/*.txt)
  install(FILES ${codecs} DESTINATION licences COMPONENT library)
  vorel_install_licences(licences library gcc=gcc-mingw-w64-base mingw-w64=mingw-w64-common ${header_packages} ${manual_packages})
  include(${PROJECT_SOURCE_DIR}/cmake/pack/windows.cmake)
else()
  include(${PROJECT_SOURCE_DIR}/cmake/pack/debian.cmake)
endif()
include(CPack)
