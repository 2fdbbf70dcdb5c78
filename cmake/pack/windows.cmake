# The zip and the installer for Windows, each with everything.
set(CPACK_GENERATOR ZIP NSIS)
set(CPACK_MONOLITHIC_INSTALL ON)
set(CPACK_PACKAGE_FILE_NAME vorel32-${PROJECT_VERSION}-win${bits})
# Both can be installed side by side.
set(CPACK_PACKAGE_INSTALL_DIRECTORY Vorel${bits})
set(CPACK_PACKAGE_INSTALL_REGISTRY_KEY vorel32-win${bits})
set(CPACK_NSIS_INSTALL_ROOT "$PROGRAMFILES")
if(bits EQUAL 64)
  set(CPACK_NSIS_INSTALL_ROOT "$PROGRAMFILES64")
endif()
set(CPACK_NSIS_DISPLAY_NAME "Vorel32 ${PROJECT_VERSION} (${bits}-bit)")
set(CPACK_NSIS_PACKAGE_NAME "${CPACK_NSIS_DISPLAY_NAME}")
set(CPACK_PACKAGE_EXECUTABLES vorelview "Vorel Viewer (${bits}-bit)")
set(CPACK_NSIS_UNINSTALL_NAME Uninstall)
set(CPACK_NSIS_INSTALLED_ICON_NAME "bin\\vorelview.exe")
set(CPACK_NSIS_ENABLE_UNINSTALL_BEFORE_INSTALL ON)
set(CPACK_NSIS_DEFINES
    "!define VIEWER_NAME Vorel${bits}\n!define VIEWER_TITLE \"Vorel Viewer (${bits}-bit)\"\n!include \"${CMAKE_CURRENT_LIST_DIR}/file_types.nsh\"")
# CPack writes this file after the others have got their time, and the installer contains it.
string(APPEND CPACK_NSIS_DEFINES
       "\n" [[!system 'test -z "$SOURCE_DATE_EPOCH" || touch -d "@$SOURCE_DATE_EPOCH" NSIS.InstallOptions.ini' = 0]])
set(CPACK_NSIS_PAGE_COMPONENTS "!insertmacro MUI_PAGE_COMPONENTS")
set(CPACK_NSIS_COMPONENT_SECTIONS "!insertmacro FileTypesSection")
set(CPACK_NSIS_EXTRA_INSTALL_COMMANDS "!insertmacro AddFileTypes")
# The template leaves the key of the vendor behind.
set(CPACK_NSIS_EXTRA_UNINSTALL_COMMANDS
    "!insertmacro RemoveFileTypes
  DeleteRegKey SHCTX \"Software\\${CPACK_PACKAGE_VENDOR}\\${CPACK_PACKAGE_INSTALL_REGISTRY_KEY}\"
  DeleteRegKey /ifempty SHCTX \"Software\\${CPACK_PACKAGE_VENDOR}\"")
if(VOREL_SIGN_WITH)
  # The uninstaller is signed before it gets into the installer. makensis has it in a file without an ending.
  set(sign "\"${CMAKE_COMMAND}\" \"-DCPACK_VOREL_SIGN_WITH=${VOREL_SIGN_WITH}\" \"-DCPACK_PACKAGE_FILES=%1.exe\" -P \"${CMAKE_CURRENT_LIST_DIR}/finish.cmake\"")
  string(APPEND CPACK_NSIS_DEFINES "\n!uninstfinalize 'cp \"%1\" \"%1.exe\" && ${sign} && mv \"%1.exe\" \"%1\"' = 0")
endif()
