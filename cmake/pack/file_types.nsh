; File types of the viewer. Pictures offer it under "Open with", and Windows lists it among the default programs, if that is ticked on
; the page of choices or /FILETYPES=1 is on the command line. Other programs' entries stay as they are.
!include "FileFunc.nsh"
!include "LogicLib.nsh"

Var FileTypes
!define VIEWER_CLASS "${VIEWER_NAME}.Picture"
; Below Software\Classes, which programs of 32 and 64 bits share: Windows looks there for what the 32-bit installer has written.
!define VIEWER_CAPABILITIES "Software\Classes\${VIEWER_CLASS}\Capabilities"

!macro EachFileType Action
  !insertmacro ${Action} bmp
  !insertmacro ${Action} dib
  !insertmacro ${Action} tif
  !insertmacro ${Action} tiff
  !insertmacro ${Action} pcx
  !insertmacro ${Action} dcx
  !insertmacro ${Action} gif
  !insertmacro ${Action} tga
  !insertmacro ${Action} cal
  !insertmacro ${Action} cals
  !insertmacro ${Action} jpg
  !insertmacro ${Action} jpeg
  !insertmacro ${Action} png
  !insertmacro ${Action} wmf
  !insertmacro ${Action} emf
!macroend

!macro AddFileType Ending
  WriteRegStr SHCTX "Software\Classes\.${Ending}\OpenWithProgids" "${VIEWER_CLASS}" ""
  WriteRegStr SHCTX "${VIEWER_CAPABILITIES}\FileAssociations" ".${Ending}" "${VIEWER_CLASS}"
!macroend

!macro RemoveFileType Ending
  DeleteRegValue SHCTX "Software\Classes\.${Ending}\OpenWithProgids" "${VIEWER_CLASS}"
  DeleteRegKey /ifnosubkeys /ifnovalues SHCTX "Software\Classes\.${Ending}\OpenWithProgids"
  DeleteRegKey /ifnosubkeys /ifnovalues SHCTX "Software\Classes\.${Ending}"
!macroend

; The page of choices lists this section alone: the others have no visible names.
!macro FileTypesSection
  Section /o "Open pictures with ${VIEWER_TITLE}"
    StrCpy $FileTypes 1
  SectionEnd
!macroend

!macro AddFileTypes
  ${GetParameters} $R0
  ClearErrors
  ${GetOptions} $R0 "/FILETYPES=" $R1
  ${IfNot} ${Errors}
    StrCpy $FileTypes $R1
  ${EndIf}
  ${If} $FileTypes == 1
    WriteRegStr SHCTX "Software\Classes\${VIEWER_CLASS}" "" "Picture"
    WriteRegStr SHCTX "Software\Classes\${VIEWER_CLASS}\DefaultIcon" "" "$INSTDIR\bin\vorelview.exe,0"
    WriteRegStr SHCTX "Software\Classes\${VIEWER_CLASS}\shell\open\command" "" '"$INSTDIR\bin\vorelview.exe" "%1"'
    WriteRegStr SHCTX "${VIEWER_CAPABILITIES}" "ApplicationName" "${VIEWER_TITLE}"
    WriteRegStr SHCTX "${VIEWER_CAPABILITIES}" "ApplicationDescription" "Shows, changes and prints pictures and scanned pages"
    WriteRegStr SHCTX "Software\RegisteredApplications" "${VIEWER_NAME}" "${VIEWER_CAPABILITIES}"
    !insertmacro EachFileType AddFileType
    ${RefreshShellIcons}
  ${EndIf}
!macroend

!macro RemoveFileTypes
  DeleteRegValue SHCTX "Software\RegisteredApplications" "${VIEWER_NAME}"
  DeleteRegKey /ifnosubkeys /ifnovalues SHCTX "Software\RegisteredApplications"
  DeleteRegKey SHCTX "Software\Classes\${VIEWER_CLASS}"
  !insertmacro EachFileType RemoveFileType
  ${RefreshShellIcons}
!macroend
