# vorel_sign(FILES...): signs the Windows files among FILES in place with the key in VOREL_SIGN_WITH. Does nothing without one.
function(vorel_sign)
  if(NOT CPACK_VOREL_SIGN_WITH)
    return()
  endif()
  set(files ${ARGV})
  list(FILTER files INCLUDE REGEX "\\.(DLL|exe)$")
  foreach(file IN LISTS files)
    # The password goes through a pipe: command lines can be seen by others.
    execute_process(
      COMMAND sh -c [[printf '%s' "$VOREL_SIGN_PASSWORD" |
                      osslsigncode sign -pkcs12 "$1" -readpass /dev/stdin -h sha256 -n Vorel32 -in "$2" -out "$2.signed"]]
              sh ${CPACK_VOREL_SIGN_WITH} ${file}
      COMMAND_ERROR_IS_FATAL ANY OUTPUT_QUIET)
    file(RENAME ${file}.signed ${file})
  endforeach()
endfunction()
