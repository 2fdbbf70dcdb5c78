# Writes the linkers' lists into the build tree, from the table of exports:
#   vorel32.def            names and ordinals, for the DLL
#   vorel32-decorated.def  the same with the names that callers' object files use: on 32-bit Windows _Name@N, where N is the size of the
#                          arguments in bytes
#   vorel32-names.inc      ordinals and names, for C++
#   libvorel32.map         the exports of libvorel32.so
set(table ${CMAKE_CURRENT_LIST_DIR}/exports.txt)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${table})

set(def "LIBRARY ${VOREL_NAME}.DLL\nEXPORTS\n")
set(decorated_def "${def}")
set(map "{\n  global:\n")
set(names)
file(STRINGS ${table} lines REGEX "^[^#]")
foreach(line IN LISTS lines)
  if(NOT line MATCHES "^ *([0-9]+|-) \\| (both|windows|linux) +\\| [A-Za-z0-9_* ]+\\| ([A-Za-z0-9_]+) +\\| ([A-Za-z0-9_*, ]+)$")
    message(FATAL_ERROR "${table} has a line of another form: ${line}")
  endif()
  set(ordinal ${CMAKE_MATCH_1})
  set(builds ${CMAKE_MATCH_2})
  set(name ${CMAKE_MATCH_3})
  string(REPLACE "," ";" parameters "${CMAKE_MATCH_4}")
  if(NOT builds STREQUAL "windows")
    string(APPEND map "    ${name};\n")
  endif()
  if(NOT builds STREQUAL "linux")
    list(LENGTH parameters count)
    if(parameters STREQUAL "void")
      set(count 0)
    endif()
    math(EXPR bytes "4 * ${count}")  # every parameter type takes one word of the stack
    set(decoration)
    if(CMAKE_SIZEOF_VOID_P EQUAL 4)
      set(decoration @${bytes})
    endif()
    string(APPEND def "  ${name} @${ordinal}\n")
    string(APPEND names "{${ordinal}, \"${name}\"},\n")
    string(APPEND decorated_def "  ${name}${decoration} @${ordinal}\n")
  endif()
endforeach()
string(APPEND map "  local:\n    *;\n};\n")

# A file whose content does not change keeps its time stamp, so nothing is linked again.
if(WIN32)
  file(CONFIGURE OUTPUT ${CMAKE_CURRENT_BINARY_DIR}/vorel32.def CONTENT "${def}" @ONLY)
  file(CONFIGURE OUTPUT ${CMAKE_CURRENT_BINARY_DIR}/vorel32-decorated.def CONTENT "${decorated_def}" @ONLY)
  file(CONFIGURE OUTPUT ${CMAKE_CURRENT_BINARY_DIR}/vorel32-names.inc CONTENT "${names}" @ONLY)
else()
  file(CONFIGURE OUTPUT ${CMAKE_CURRENT_BINARY_DIR}/libvorel32.map CONTENT "${map}" @ONLY)
endif()
