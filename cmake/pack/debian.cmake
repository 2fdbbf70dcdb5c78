# The packages for Debian: a component each.
if(NOT VOREL_DEBIAN)
  set(CPACK_GENERATOR TGZ)
  return()
endif()

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")  # would become the first line of every description
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL library development programs python)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR}/bin)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(library_version ${PROJECT_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE})

# vorel_debian_package(COMPONENT NAME SECTION "DEPENDS" SUMMARY DESCRIPTION [LICENCES...]): a package, with the texts that each has and
# the licences of what others put into it.
macro(vorel_debian_package component name section depends summary description)
  string(TOUPPER ${component} upper)
  set(CPACK_DEBIAN_${upper}_PACKAGE_NAME ${name})
  set(CPACK_DEBIAN_${upper}_PACKAGE_SECTION ${section})
  set(CPACK_DEBIAN_${upper}_PACKAGE_DEPENDS "${depends}")
  set(CPACK_DEBIAN_${upper}_DESCRIPTION "${summary}\n${description}")
  set(CPACK_COMPONENT_${upper}_DESCRIPTION "${summary}\n${description}")
  install(FILES ${debian_texts}/changelog.Debian.gz ${debian_texts}/copyright DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${name}
          COMPONENT ${component})
  vorel_install_licences(${CMAKE_INSTALL_DATADIR}/doc/${name}/licences ${component} ${ARGN})
endmacro()

set(debian_texts ${PROJECT_BINARY_DIR}/debian)
string(TIMESTAMP release_date "%a, %d %b %Y %H:%M:%S +0000" UTC)  # of SOURCE_DATE_EPOCH, if that is set
file(WRITE ${debian_texts}/changelog.Debian
     "vorel32 (${library_version}) unstable; urgency=medium\n\n  * Release ${PROJECT_VERSION}; CHANGELOG.md says what changed.\n\n"
     " -- ${CPACK_PACKAGE_CONTACT}  ${release_date}\n")
execute_process(COMMAND gzip -9nkf ${debian_texts}/changelog.Debian COMMAND_ERROR_IS_FATAL ANY)
file(READ ${PROJECT_SOURCE_DIR}/LICENSE licence)
string(FIND "${licence}" "Permission is hereby granted" start)
string(SUBSTRING "${licence}" ${start} -1 licence)
string(REGEX REPLACE "\n\n" "\n.\n" licence "${licence}")
string(REGEX REPLACE "\n([^\n])" "\n \\1" licence "${licence}")
file(WRITE ${debian_texts}/copyright
     "Format: https://www.debian.org/doc/packaging-manuals/copyright-format/1.0/\nUpstream-Name: vorel32\n"
     "Comment: Texts in a folder licences beside this file are those of headers that are compiled in, or of the manual's scripts and styles.\n\n"
     "Files: *\nCopyright: 2026 The Vorel32 authors\nLicense: Expat\n ${licence}")

vorel_debian_package(library libvorel32-5 libs ""
                     "imaging library for packed DIBs"
                     "Reads, writes, rotates, cleans and converts raster images held as packed\nDIBs, with codec modules for TIFF, CALS, PCX, DCX, GIF, TGA, JPEG and PNG.")
vorel_debian_package(development libvorel32-dev libdevel "libvorel32-5 (= ${library_version})"
                     "imaging library for packed DIBs - development files"
                     "Header, CMake and pkg-config files, samples, declarations for other\nlanguages, and the manual." ${manual_packages})
vorel_debian_package(programs vorel graphics ""
                     "command line for scanned pages and other raster images"
                     "Converts, cleans, turns, scales and dithers pages, alone and in batches." ${header_packages})
vorel_debian_package(python python3-vorel32 python "python3 (>= 3.11), python3 (<< 3.12), libvorel32-5 (= ${library_version})"
                     "imaging library for scanned pages, for Python"
                     "The package vorel32: pictures as objects, files, chains of steps, and batches."
                     ${header_packages} pybind11=pybind11-dev)

set(CPACK_DEBIAN_LIBRARY_PACKAGE_SHLIBDEPS ON)
file(WRITE ${debian_texts}/shlibs "libvorel32 5 libvorel32-5 (>= ${PROJECT_VERSION})\n")
file(WRITE ${debian_texts}/triggers "activate-noawait ldconfig\n")
set(CPACK_DEBIAN_LIBRARY_PACKAGE_CONTROL_EXTRA ${debian_texts}/shlibs ${debian_texts}/triggers)
set(CPACK_DEBIAN_PYTHON_PACKAGE_CONTROL_EXTRA ${CMAKE_CURRENT_LIST_DIR}/python/postinst ${CMAKE_CURRENT_LIST_DIR}/python/prerm)
