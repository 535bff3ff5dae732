; The installer of one edition, made by ../package:
;   makensis -DVERSION=1.0.0 -DEDITION=x64 -DFILES=folder -DPICTURE=side.bmp -DOUT=setup.exe [-DSIGN=command] installer.nsi
; FILES holds what is to be installed and nothing else; it is listed below by name, because the remover deletes by name.
; PICTURE stands at the left of the first and the last page, 164 by 314 pixels.
;
; It runs without the rights of an administrator, for the present user; with them, for all users unless told otherwise.
;   /S                       silent; the exit code says what became of it: 0 done, 1 cancelled, 2 not done
;   /AllUsers, /CurrentUser  for whom
;   /PFAD=folder             the folder of the account file, for a new Tolv.ini; one that exists is never touched
;   /D=folder                where to; last, without quotes
;
; The editions are two programs to Windows: each has its own folder, entry in the start menu and removal.

!if ${EDITION} == x64
    Target amd64-unicode
    !define NAME "Tolv-Benutzerkontenverwaltung"
    !define EDITION_NAME "64-Bit-Fassung"
!else
    Target x86-unicode
    !define NAME "Tolv-Benutzerkontenverwaltung (32 Bit)"
    !define EDITION_NAME "32-Bit-Fassung"
!endif
!define TOOL prjDexoBenutzerkonten.exe
!define COMPANION kontodb.exe
!define SETTINGS "$INSTDIR\Tolv.ini"
!define REMOVER Deinstallieren.exe
!define REMOVAL_KEY "Software\Microsoft\Windows\CurrentVersion\Uninstall\${NAME}"
!define SETTING_MAX_CHARACTERS 254

!include MUI2.nsh
!include LogicLib.nsh
!include WinVer.nsh
!include FileFunc.nsh

Name "${NAME}"
Caption "${NAME} ${VERSION}: Installation"
OutFile "${OUT}"
RequestExecutionLevel highest
SetCompressor /SOLID lzma
ManifestDPIAware true
ManifestSupportedOS Win10
BrandingText "${NAME} ${VERSION}"
ShowInstDetails nevershow
ShowUninstDetails nevershow
!ifdef SIGN
    !uninstfinalize '${SIGN} "%1"' = 0
!endif

VIProductVersion ${VERSION}.0
VIFileVersion ${VERSION}.0
!macro versionText key text
    VIAddVersionKey /LANG=1031 "${key}" "${text}"
!macroend
!insertmacro versionText FileDescription "${NAME}: Installation"
!insertmacro versionText FileVersion "${VERSION}"
!insertmacro versionText ProductName "${NAME}"
!insertmacro versionText ProductVersion "${VERSION}"
!insertmacro versionText LegalCopyright ""

Var isAdministrator ; 1 or 0
Var forAllUsers     ; 1 or 0
Var askedFolder     ; of /D, else empty
Var accountFolder   ; of /PFAD or the page, else empty
Var choice
Var field

; The pages

!define MUI_ICON ../win32/tool.ico
!define MUI_UNICON ../win32/tool.ico
!define MUI_WELCOMEFINISHPAGE_BITMAP "${PICTURE}"
!define MUI_ABORTWARNING

!define MUI_WELCOMEPAGE_TITLE "Tolv-Benutzerkontenverwaltung ${VERSION}"
!define MUI_WELCOMEPAGE_TEXT "Dieser Assistent installiert die ${EDITION_NAME}.$\r$\n$\r$\n\
    Nehmen Sie die 32-Bit-Fassung, wo die Tolv-Anwendung über den 32-Bit-Provider (Microsoft.Jet.OLEDB.4.0) mit der \
    Kontendatei arbeitet, sonst die 64-Bit-Fassung.$\r$\n$\r$\n\
    Beim Aktualisieren und beim Entfernen bleiben die Einstellungen (Tolv.ini) und die Kontendatei (BenKTO.mdb), wie \
    sie sind.$\r$\n$\r$\nBitte schließen Sie das Werkzeug, bevor Sie weitergehen."
!insertmacro MUI_PAGE_WELCOME
Page custom showUsers leaveUsers
!insertmacro MUI_PAGE_DIRECTORY
Page custom showAccountFolder leaveAccountFolder
!insertmacro MUI_PAGE_INSTFILES
!define MUI_FINISHPAGE_TITLE "Fertig"
!define MUI_FINISHPAGE_TEXT "Das Werkzeug steht im Startmenü als „${NAME}“.$\r$\n$\r$\n\
    Das Handbuch liegt im Programmordner, als Handbuch.html und Handbuch.pdf. Tolv-Beispiel.ini zeigt, was in Tolv.ini \
    stehen kann."
!insertmacro MUI_PAGE_FINISH

!insertmacro MUI_UNPAGE_CONFIRM
!insertmacro MUI_UNPAGE_INSTFILES
!insertmacro MUI_LANGUAGE German

; What both programs do

; ends CODE MESSAGE: tells, unless silent, and ends.
!macro ends code message
    MessageBox MB_OK|MB_ICONSTOP "${message}" /SD IDOK
    SetErrorLevel ${code}
    Quit
!macroend

; A program that runs, here or from a shared folder on another machine, cannot be replaced.
!macro replaceable program
    ${Do}
        ClearErrors
        ${IfNot} ${FileExists} "$INSTDIR\${program}"
            ${ExitDo}
        ${EndIf}
        FileOpen $0 "$INSTDIR\${program}" a
        ${IfNot} ${Errors}
            FileClose $0
            ${ExitDo}
        ${EndIf}
        ${If} ${Cmd} `MessageBox MB_RETRYCANCEL|MB_ICONEXCLAMATION "„$INSTDIR\${program}“ wird gerade benutzt, oder Sie \
            dürfen in diesem Ordner nicht schreiben.$\r$\n$\r$\nSchließen Sie das Programm auf allen Rechnern, die es von \
            hier gestartet haben, und wiederholen Sie." /SD IDCANCEL IDCANCEL`
            SetErrorLevel 2
            Quit
        ${EndIf}
    ${Loop}
!macroend

!macro findRights
    !if ${EDITION} == x64
        SetRegView 64
    !endif
    UserInfo::GetAccountType
    Pop $0
    StrCpy $isAdministrator 0
    ${If} $0 == Admin
        StrCpy $isAdministrator 1
    ${EndIf}
!macroend

; Installing

Function .onInit
    ${IfNot} ${AtLeastWin10}
        !insertmacro ends 2 "Die Tolv-Benutzerkontenverwaltung braucht Windows 10 oder neuer."
    ${EndIf}
    !insertmacro findRights
    StrCpy $askedFolder $INSTDIR
    ${GetParameters} $1
    Call findAccountFolder

    ; An earlier installation is updated.
    StrCpy $forAllUsers $isAdministrator
    ReadRegStr $2 HKLM "${REMOVAL_KEY}" InstallLocation
    ReadRegStr $3 HKCU "${REMOVAL_KEY}" InstallLocation
    ${If} $2 == ""
    ${AndIf} $3 != ""
        StrCpy $forAllUsers 0
    ${EndIf}
    ClearErrors
    ${GetOptions} $1 "/CurrentUser" $0
    ${IfNot} ${Errors}
        StrCpy $forAllUsers 0
    ${EndIf}
    ClearErrors
    ${GetOptions} $1 "/AllUsers" $0
    ${IfNot} ${Errors}
        ${If} $isAdministrator = 0
            !insertmacro ends 2 "Für alle Benutzer kann nur ein Administrator installieren."
        ${EndIf}
        StrCpy $forAllUsers 1
    ${EndIf}
    Call chooseFolder
FunctionEnd

; The value of /PFAD= in $1. Quotes may stand around it or around the whole; GetOptions knows only the first, and takes an
; apostrophe in a name for a quote.
Function findAccountFolder
    StrCpy $2 -1
    ${Do}
        IntOp $2 $2 + 1
        StrCpy $0 $1 6 $2
        ${If} $0 == ""
            Return
        ${EndIf}
    ${LoopUntil} $0 == "/PFAD="
    StrCpy $3 " " ; what ends the value
    IntOp $0 $2 - 1
    ${If} $0 >= 0
        StrCpy $0 $1 1 $0
        ${If} $0 == '"'
            StrCpy $3 '"'
        ${EndIf}
    ${EndIf}
    IntOp $2 $2 + 6
    StrCpy $0 $1 1 $2
    ${If} $0 == '"'
        StrCpy $3 '"'
        IntOp $2 $2 + 1
    ${EndIf}
    ${Do}
        StrCpy $0 $1 1 $2
        ${If} $0 == ""
        ${OrIf} $0 == $3
            ${ExitDo}
        ${EndIf}
        StrCpy $accountFolder "$accountFolder$0"
        IntOp $2 $2 + 1
    ${Loop}
FunctionEnd

; The folder that was asked for, else that of the earlier installation, else the usual one.
Function chooseFolder
    ${If} $forAllUsers = 1
        SetShellVarContext all
        !if ${EDITION} == x64
            StrCpy $INSTDIR "$PROGRAMFILES64\${NAME}"
        !else
            StrCpy $INSTDIR "$PROGRAMFILES32\${NAME}"
        !endif
    ${Else}
        SetShellVarContext current
        StrCpy $INSTDIR "$LOCALAPPDATA\Programs\${NAME}"
    ${EndIf}
    ReadRegStr $0 SHCTX "${REMOVAL_KEY}" InstallLocation
    ${If} $0 != ""
        StrCpy $INSTDIR $0
    ${EndIf}
    ${If} $askedFolder != ""
        StrCpy $INSTDIR $askedFolder
    ${EndIf}
FunctionEnd

Function showUsers
    ${If} $isAdministrator = 0
        Abort
    ${EndIf}
    !insertmacro MUI_HEADER_TEXT "Benutzer" "Für wen soll das Werkzeug installiert werden?"
    nsDialogs::Create 1018
    Pop $0
    ${NSD_CreateFirstRadioButton} 0 10u 100% 12u "Für alle Benutzer dieses Rechners"
    Pop $choice
    ${NSD_CreateAdditionalRadioButton} 0 28u 100% 12u "Nur für mich"
    Pop $0
    ${If} $forAllUsers = 1
        StrCpy $0 $choice
    ${EndIf}
    ${NSD_Check} $0
    ${NSD_SetFocus} $0
    nsDialogs::Show
FunctionEnd

Function leaveUsers
    ${NSD_GetState} $choice $0
    ${If} $0 = ${BST_CHECKED}
        StrCpy $0 1
    ${Else}
        StrCpy $0 0
    ${EndIf}
    ${If} $0 <> $forAllUsers ; else a folder chosen on the next page stays when the user goes back
        StrCpy $forAllUsers $0
        Call chooseFolder
    ${EndIf}
FunctionEnd

Function showAccountFolder
    ${If} ${FileExists} "${SETTINGS}"
        Abort
    ${EndIf}
    !insertmacro MUI_HEADER_TEXT "Ordner der Kontendatei" "In welchem Ordner liegt BenKTO.mdb?"
    nsDialogs::Create 1018
    Pop $0
    ${NSD_CreateLabel} 0 0 100% 58u "Der Ordner wird in die neue Datei Tolv.ini im Programmordner geschrieben, als \
        BenKtoPath.$\r$\n$\r$\nWer Konten ändert, muss in diesem Ordner schreiben dürfen; unter „Programme“ darf er das \
        nicht. Bleibt das Feld leer, wird keine Tolv.ini angelegt, und das Werkzeug sucht BenKTO.mdb im Programmordner."
    Pop $0
    ${NSD_CreateLabel} 0 66u 100% 10u "Ordner:"
    Pop $0
    ${NSD_CreateDirRequest} 0 77u -67u 13u $accountFolder
    Pop $field
    ${NSD_CreateBrowseButton} -62u 76u 62u 15u "Durchsuchen ..."
    Pop $0
    ${NSD_OnClick} $0 browse
    ${NSD_SetFocus} $field
    nsDialogs::Show
FunctionEnd

Function browse
    ${NSD_GetText} $field $0
    nsDialogs::SelectFolderDialog "Ordner der Kontendatei" $0
    Pop $0
    ${If} $0 != error
        ${NSD_SetText} $field $0
    ${EndIf}
FunctionEnd

Function leaveAccountFolder
    ${NSD_GetText} $field $accountFolder
    ${If} $accountFolder != ""
    ${AndIfNot} ${FileExists} "$accountFolder\BenKTO.mdb"
        ${If} ${Cmd} `MessageBox MB_YESNO|MB_ICONQUESTION "In „$accountFolder“ ist keine Datei BenKTO.mdb zu sehen. \
            Trotzdem übernehmen?" IDNO`
            Abort
        ${EndIf}
    ${EndIf}
FunctionEnd

; Written in the code page of Windows, in which the tool reads it.
Function writeSettings
    ${Do}
        StrCpy $0 $accountFolder 1 -1
        ${If} $0 != "\"
            ${ExitDo}
        ${EndIf}
        StrCpy $accountFolder $accountFolder -1
    ${Loop}
    ${If} $accountFolder == ""
    ${OrIf} ${FileExists} "${SETTINGS}"
        Return
    ${EndIf}
    WriteINIStr "${SETTINGS}" SETTINGS BenKtoPath $accountFolder
    FlushINI "${SETTINGS}"
    ReadINIStr $0 "${SETTINGS}" SETTINGS BenKtoPath
    StrLen $1 $accountFolder
    ${If} $0 S!= $accountFolder
    ${OrIf} $1 > ${SETTING_MAX_CHARACTERS}
        Delete "${SETTINGS}"
        !insertmacro ends 2 "„$accountFolder“ lässt sich nicht in Tolv.ini schreiben: Der Name ist länger als \
            ${SETTING_MAX_CHARACTERS} Zeichen oder enthält Zeichen, die es in der Codepage von Windows nicht gibt. Nennen \
            Sie einen anderen Ordner."
    ${EndIf}
FunctionEnd

Section
    !insertmacro replaceable ${TOOL}
    !insertmacro replaceable ${COMPANION}
    ClearErrors
    SetOutPath $INSTDIR
    ${If} ${Errors}
        !insertmacro ends 2 "Der Ordner „$INSTDIR“ lässt sich nicht anlegen. Nennen Sie einen anderen."
    ${EndIf}
    Call writeSettings
    ClearErrors
    File "${FILES}/${TOOL}"
    File "${FILES}/${COMPANION}"
    File "${FILES}/Handbuch.html"
    File "${FILES}/Handbuch.pdf"
    File "${FILES}/Tolv-Beispiel.ini"
    File "${FILES}/SHA256SUMS"
    WriteUninstaller "$INSTDIR\${REMOVER}"
    ${If} ${Errors}
        !insertmacro ends 2 "In „$INSTDIR“ lässt sich nicht alles schreiben. Prüfen Sie Ihre Rechte und den freien Platz, \
            und installieren Sie noch einmal."
    ${EndIf}
    CreateShortcut "$SMPROGRAMS\${NAME}.lnk" "$INSTDIR\${TOOL}"
    WriteRegStr SHCTX "${REMOVAL_KEY}" DisplayName "${NAME}"
    WriteRegStr SHCTX "${REMOVAL_KEY}" DisplayVersion "${VERSION}"
    WriteRegStr SHCTX "${REMOVAL_KEY}" DisplayIcon "$INSTDIR\${TOOL}"
    WriteRegStr SHCTX "${REMOVAL_KEY}" InstallLocation "$INSTDIR"
    WriteRegStr SHCTX "${REMOVAL_KEY}" UninstallString '"$INSTDIR\${REMOVER}"'
    WriteRegStr SHCTX "${REMOVAL_KEY}" QuietUninstallString '"$INSTDIR\${REMOVER}" /S'
    WriteRegDWORD SHCTX "${REMOVAL_KEY}" NoModify 1
    WriteRegDWORD SHCTX "${REMOVAL_KEY}" NoRepair 1
    SectionGetSize 0 $0
    WriteRegDWORD SHCTX "${REMOVAL_KEY}" EstimatedSize $0
SectionEnd

; Removing

Function un.onInit
    !insertmacro findRights
    SetShellVarContext current
    ReadRegStr $0 SHCTX "${REMOVAL_KEY}" InstallLocation
    ${If} $0 != $INSTDIR
        SetShellVarContext all
        ${If} $isAdministrator = 0
            !insertmacro ends 2 "Was für alle Benutzer installiert ist, kann nur ein Administrator entfernen."
        ${EndIf}
    ${EndIf}
FunctionEnd

Section Uninstall
    !insertmacro replaceable ${TOOL}
    !insertmacro replaceable ${COMPANION}
    Delete "$INSTDIR\${TOOL}"
    Delete "$INSTDIR\${COMPANION}"
    Delete "$INSTDIR\Handbuch.html"
    Delete "$INSTDIR\Handbuch.pdf"
    Delete "$INSTDIR\Tolv-Beispiel.ini"
    Delete "$INSTDIR\SHA256SUMS"
    Delete "$INSTDIR\${REMOVER}"
    RMDir "$INSTDIR" ; only an empty one: settings and account file stay
    Delete "$SMPROGRAMS\${NAME}.lnk"
    DeleteRegKey SHCTX "${REMOVAL_KEY}"
SectionEnd
