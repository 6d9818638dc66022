; Installs for one user, without administrator's rights: the program writes its settings beside
; itself. pack.sh sets VERSION, FOLDER (the files to install) and OUTPUT.
Target x86-unicode
SetCompressor /SOLID lzma
RequestExecutionLevel user
ManifestDPIAware true

!include LogicLib.nsh
!include MUI2.nsh

!define INSTALLED "Software\Microsoft\Windows\CurrentVersion\Uninstall\Quirkmeter"
!define MENU "$SMPROGRAMS\FS2002 Quirkmeter"
!define CLASSES "Software\Classes"
!define PROFILE "Quirkmeter.Profile"
!define SHCNE_ASSOCCHANGED 0x08000000

Name "FS2002 Quirkmeter"
OutFile "${OUTPUT}"
InstallDir "$LOCALAPPDATA\Programs\Quirkmeter"
InstallDirRegKey HKCU "${INSTALLED}" InstallLocation
BrandingText " "

VIProductVersion ${VERSION}.0.0
VIAddVersionKey ProductName "FS2002 Quirkmeter"
VIAddVersionKey ProductVersion "${VERSION}"
VIAddVersionKey FileDescription "FS2002 Quirkmeter Setup"
VIAddVersionKey FileVersion "${VERSION}"
VIAddVersionKey LegalCopyright ""

!define MUI_ICON quirkmeter.ico
!define MUI_UNICON quirkmeter.ico
!define MUI_FINISHPAGE_RUN "$INSTDIR\Try it.exe"
!define MUI_FINISHPAGE_RUN_TEXT "Try it: fly with the practice simulator"
!insertmacro MUI_PAGE_DIRECTORY
!insertmacro MUI_PAGE_INSTFILES
!insertmacro MUI_PAGE_FINISH
!insertmacro MUI_UNPAGE_CONFIRM
!insertmacro MUI_UNPAGE_INSTFILES
!insertmacro MUI_LANGUAGE English

; A running program cannot be replaced.
!macro TryToOpen program
    ${If} ${FileExists} "$INSTDIR\${program}"
        FileOpen $0 "$INSTDIR\${program}" a
        FileClose $0
    ${EndIf}
!macroend

!macro RequireClosed
again:
    ClearErrors
    !insertmacro TryToOpen Quirkmeter.exe
    !insertmacro TryToOpen fsqmhc.exe
    !insertmacro TryToOpen practice-simulator.exe
    !insertmacro TryToOpen rehearse.exe
    IfErrors 0 closed
    MessageBox MB_RETRYCANCEL|MB_ICONEXCLAMATION \
        "Please close Quirkmeter, Rehearse and the Practice Simulator first." /SD IDCANCEL IDRETRY again
    SetErrorLevel 2
    Quit
closed:
!macroend

; The pilot may change the profiles and the sounds. A file is unchanged if it still has the time
; that was noted when it was installed; any other file stays.
!macro ReadTimes file
    GetFileTime "$INSTDIR\${file}" $0 $1
    StrCpy $0 "$0 $1"
    ReadRegStr $1 HKCU "${INSTALLED}" "${file}"
!macroend

!macro InstallChangeable file
    !insertmacro ReadTimes "${file}"
    ${IfNot} ${FileExists} "$INSTDIR\${file}"
    ${OrIf} $0 == $1
        File "/oname=${file}" "${FOLDER}\${file}"
        !insertmacro ReadTimes "${file}"
        WriteRegStr HKCU "${INSTALLED}" "${file}" $0
    ${EndIf}
!macroend

!macro DeleteChangeable file
    !insertmacro ReadTimes "${file}"
    ${If} $0 == $1
        Delete "$INSTDIR\${file}"
    ${EndIf}
!macroend

!macro ForEachChangeable do
    !insertmacro ${do} practice.qmp
    !insertmacro ${do} profiles\trainer.qmp
    !insertmacro ${do} profiles\light-twin.qmp
    !insertmacro ${do} profiles\airliner.qmp
    !insertmacro ${do} profiles\freighter.qmp
    !insertmacro ${do} profiles\check-ride.qmp
    !insertmacro ${do} profiles\instruments.qmp
    !insertmacro ${do} profiles\engines.qmp
    !insertmacro ${do} sound_failure.wav
    !insertmacro ${do} sound_ok.wav
    !insertmacro ${do} sound_warning.wav
!macroend

Section
    !insertmacro RequireClosed
    SetOutPath "$INSTDIR"
    File /r /x *.qmp /x *.wav "${FOLDER}/*"
    CreateDirectory "$INSTDIR\profiles"
    !insertmacro ForEachChangeable InstallChangeable
    WriteUninstaller "$INSTDIR\uninstall.exe"

    CreateDirectory "${MENU}"
    CreateShortcut "${MENU}\FS2002 Quirkmeter.lnk" "$INSTDIR\Quirkmeter.exe"
    CreateShortcut "${MENU}\Try it.lnk" "$INSTDIR\Try it.exe"
    CreateShortcut "${MENU}\Rehearse.lnk" "$INSTDIR\rehearse.exe"
    CreateShortcut "${MENU}\Practice Simulator.lnk" "$INSTDIR\practice-simulator.exe"
    CreateShortcut "${MENU}\Help.lnk" "$INSTDIR\Quirkmeter.htm"

    ; A profile opens in Rehearse, unless profiles open in another program already.
    WriteRegStr HKCU "${CLASSES}\${PROFILE}" "" "FS2002 Quirkmeter Profile"
    WriteRegStr HKCU "${CLASSES}\${PROFILE}\DefaultIcon" "" "$INSTDIR\Quirkmeter.exe"
    WriteRegStr HKCU "${CLASSES}\${PROFILE}\shell\open\command" "" '"$INSTDIR\rehearse.exe" "%1"'
    WriteRegStr HKCU "${CLASSES}\.qmp\OpenWithProgids" "${PROFILE}" ""
    ReadRegStr $0 HKCU "${CLASSES}\.qmp" ""
    ${If} $0 == ""
        WriteRegStr HKCU "${CLASSES}\.qmp" "" "${PROFILE}"
    ${EndIf}
    System::Call "shell32::SHChangeNotify(i ${SHCNE_ASSOCCHANGED}, i 0, p 0, p 0)"

    WriteRegStr HKCU "${INSTALLED}" DisplayName "FS2002 Quirkmeter"
    WriteRegStr HKCU "${INSTALLED}" DisplayVersion "${VERSION}"
    WriteRegStr HKCU "${INSTALLED}" DisplayIcon "$INSTDIR\Quirkmeter.exe"
    WriteRegStr HKCU "${INSTALLED}" InstallLocation "$INSTDIR"
    WriteRegStr HKCU "${INSTALLED}" UninstallString '"$INSTDIR\uninstall.exe"'
    WriteRegStr HKCU "${INSTALLED}" QuietUninstallString '"$INSTDIR\uninstall.exe" /S'
    SectionGetSize 0 $0
    WriteRegDWORD HKCU "${INSTALLED}" EstimatedSize $0
    WriteRegDWORD HKCU "${INSTALLED}" NoModify 1
    WriteRegDWORD HKCU "${INSTALLED}" NoRepair 1
SectionEnd

; Files that the user made or changed stay, and so does the folder: settings, profiles and sounds.
Section Uninstall
    !insertmacro RequireClosed
    Delete "$INSTDIR\Quirkmeter.exe"
    Delete "$INSTDIR\fsqmhc.exe"
    Delete "$INSTDIR\practice-simulator.exe"
    Delete "$INSTDIR\rehearse.exe"
    Delete "$INSTDIR\Try it.exe"
    Delete "$INSTDIR\LICENSE.txt"
    Delete "$INSTDIR\Quirkmeter.htm"
    Delete "$INSTDIR\help\all-reliabilities.png"
    Delete "$INSTDIR\help\bar.png"
    Delete "$INSTDIR\help\hardcore.png"
    Delete "$INSTDIR\help\main.png"
    Delete "$INSTDIR\help\message.png"
    Delete "$INSTDIR\help\open.png"
    Delete "$INSTDIR\help\options.png"
    Delete "$INSTDIR\help\practice-simulator.png"
    Delete "$INSTDIR\help\rehearsal.png"
    Delete "$INSTDIR\help\rehearse.png"
    Delete "$INSTDIR\help\reliability.png"
    Delete "$INSTDIR\help\save.png"
    Delete "$INSTDIR\help\settings.png"
    RMDir "$INSTDIR\help"
    !insertmacro ForEachChangeable DeleteChangeable
    RMDir "$INSTDIR\profiles"
    Delete "$INSTDIR\uninstall.exe"
    RMDir "$INSTDIR"

    Delete "${MENU}\FS2002 Quirkmeter.lnk"
    Delete "${MENU}\Try it.lnk"
    Delete "${MENU}\Rehearse.lnk"
    Delete "${MENU}\Practice Simulator.lnk"
    Delete "${MENU}\Help.lnk"
    RMDir "${MENU}"
    DeleteRegKey HKCU "${INSTALLED}"

    DeleteRegKey HKCU "${CLASSES}\${PROFILE}"
    DeleteRegValue HKCU "${CLASSES}\.qmp\OpenWithProgids" "${PROFILE}"
    DeleteRegKey /ifempty HKCU "${CLASSES}\.qmp\OpenWithProgids"
    ReadRegStr $0 HKCU "${CLASSES}\.qmp" ""
    ${If} $0 == "${PROFILE}"
        DeleteRegValue HKCU "${CLASSES}\.qmp" ""
    ${EndIf}
    DeleteRegKey /ifempty HKCU "${CLASSES}\.qmp"
    System::Call "shell32::SHChangeNotify(i ${SHCNE_ASSOCCHANGED}, i 0, p 0, p 0)"
SectionEnd
