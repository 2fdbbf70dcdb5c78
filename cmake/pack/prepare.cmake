# Runs over the files of a package before they are packed: signs them if that is wanted, and gives all one time (SOURCE_DATE_EPOCH) and
# folders one order, so that equal files make equal packages.
file(GLOB_RECURSE files LIST_DIRECTORIES true ${CPACK_TEMPORARY_DIRECTORY}/*)
include(${CMAKE_CURRENT_LIST_DIR}/sign.cmake)
vorel_sign(${files})

# The installer takes files in the order in which the file system lists them, which is mostly that of their making.
execute_process(
  COMMAND sh -ec [[mv "$1" "$1.unsorted" && mkdir "$1" && tar -C "$1.unsorted" --sort=name -cf - . | tar -C "$1" -xpf - && rm -r "$1.unsorted"]]
          sh ${CPACK_TEMPORARY_DIRECTORY} COMMAND_ERROR_IS_FATAL ANY)

if(DEFINED ENV{SOURCE_DATE_EPOCH})
  execute_process(COMMAND touch --no-dereference -d @$ENV{SOURCE_DATE_EPOCH} ${CPACK_TEMPORARY_DIRECTORY} ${files} COMMAND_ERROR_IS_FATAL ANY)
endif()
