Target amd64-unicode
; The installer of the programs, for every user of the machine. makensis -DVERSAO=7.17 -DPROGRAMAS=FOLDER -DSAIDA=FILE
; Silent: /S, and /D=FOLDER last for another folder. It ends with 2 when a program of the folder is running.
!include MUI2.nsh

!define CHAVE "Software\Microsoft\Windows\CurrentVersion\Uninstall\AtualizaWKD"

Name "AtualizaWKD ${VERSAO}"
OutFile "${SAIDA}"
InstallDir "$PROGRAMFILES64\WKD Software\AtualizaWKD"
InstallDirRegKey HKLM "Software\WKD Software\AtualizaWKD" "Pasta"
RequestExecutionLevel admin
SetCompressor /SOLID lzma
BrandingText "WKD Software"

VIProductVersion "${VERSAO}.0.0"
VIAddVersionKey /LANG=1046 "ProductName" "AtualizaWKD"
VIAddVersionKey /LANG=1046 "CompanyName" "WKD Software"
VIAddVersionKey /LANG=1046 "FileDescription" "Instalador do AtualizaWKD"
VIAddVersionKey /LANG=1046 "FileVersion" "${VERSAO}"
VIAddVersionKey /LANG=1046 "LegalCopyright" "WKD Software"

!define MUI_ICON "atualizawkd.ico"
!define MUI_UNICON "atualizawkd.ico"
!insertmacro MUI_PAGE_DIRECTORY
!insertmacro MUI_PAGE_INSTFILES
!define MUI_FINISHPAGE_RUN "$INSTDIR\AtualizaWKD.exe"
!insertmacro MUI_PAGE_FINISH
!insertmacro MUI_UNPAGE_CONFIRM
!insertmacro MUI_UNPAGE_INSTFILES
!insertmacro MUI_LANGUAGE "PortugueseBR"

; A program that runs keeps its file.
!macro Libera arquivo
    ClearErrors
    Delete "$INSTDIR\${arquivo}"
    ${If} ${Errors}
    ${AndIf} ${FileExists} "$INSTDIR\${arquivo}"
        MessageBox MB_OK|MB_ICONSTOP "${arquivo} está em uso. Feche o programa e tente de novo." /SD IDOK
        SetErrorLevel 2
        Quit
    ${EndIf}
!macroend

!macro Lugar
    SetRegView 64
    SetShellVarContext all
!macroend

Section
    !insertmacro Lugar
    !insertmacro Libera AtualizaWKD.exe
    !insertmacro Libera AtualizaWKD.com
    !insertmacro Libera PacoteWKD.exe
    SetOutPath $INSTDIR
    File "${PROGRAMAS}/AtualizaWKD.exe"
    File "${PROGRAMAS}/AtualizaWKD.com"
    File "${PROGRAMAS}/PacoteWKD.exe"
    WriteUninstaller "$INSTDIR\Desinstala.exe"
    CreateShortcut "$SMPROGRAMS\AtualizaWKD.lnk" "$INSTDIR\AtualizaWKD.exe"
    WriteRegStr HKLM "Software\WKD Software\AtualizaWKD" "Pasta" $INSTDIR
    WriteRegStr HKLM "${CHAVE}" "DisplayName" "AtualizaWKD"
    WriteRegStr HKLM "${CHAVE}" "DisplayVersion" "${VERSAO}"
    WriteRegStr HKLM "${CHAVE}" "DisplayIcon" "$INSTDIR\AtualizaWKD.exe"
    WriteRegStr HKLM "${CHAVE}" "Publisher" "WKD Software"
    WriteRegStr HKLM "${CHAVE}" "InstallLocation" $INSTDIR
    WriteRegStr HKLM "${CHAVE}" "UninstallString" '"$INSTDIR\Desinstala.exe"'
    WriteRegStr HKLM "${CHAVE}" "QuietUninstallString" '"$INSTDIR\Desinstala.exe" /S'
    WriteRegDWORD HKLM "${CHAVE}" "NoModify" 1
    WriteRegDWORD HKLM "${CHAVE}" "NoRepair" 1
SectionEnd

; What the programs wrote (WKD.ini, log, reports, rejected rows) stays, and the folder with it.
Section Uninstall
    !insertmacro Lugar
    !insertmacro Libera AtualizaWKD.exe
    !insertmacro Libera AtualizaWKD.com
    !insertmacro Libera PacoteWKD.exe
    Delete "$INSTDIR\Desinstala.exe"
    Delete "$SMPROGRAMS\AtualizaWKD.lnk"
    RMDir $INSTDIR
    RMDir "$PROGRAMFILES64\WKD Software"
    DeleteRegKey HKLM "${CHAVE}"
    DeleteRegKey HKLM "Software\WKD Software\AtualizaWKD"
    DeleteRegKey /ifempty HKLM "Software\WKD Software"
SectionEnd
