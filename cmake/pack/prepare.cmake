# Runs over the files of a package before they are packed: signs them if that is wanted, and gives all one time (SOURCE_DATE_EPOCH), so
# that equal files make equal packages.
file(GLOB_RECURSE files LIST_DIRECTORIES true ${CPACK_TEMPORARY_DIRECTORY}/*)
include(${CMAKE_CURRENT_LIST_DIR}/sign.cmake)
vorel_sign(${files})

if(DEFINED ENV{SOURCE_DATE_EPOCH})
  execute_process(COMMAND touch --no-dereference -d @$ENV{SOURCE_DATE_EPOCH} ${CPACK_TEMPORARY_DIRECTORY} ${files} COMMAND_ERROR_IS_FATAL ANY)
endif()
