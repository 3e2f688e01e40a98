# The Debian package: program and what it writes live in one folder, /opt/AtualizaWKD. scripts/pacote-deb.sh packs it
# from the release build, whose preset names the folders.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME atualizawkd)
set(CPACK_PACKAGE_VENDOR "WKD Software")
set(CPACK_PACKAGE_CONTACT "WKD Software <suporte@wkd.invalid>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "atualiza o banco de dados para o dicionário de uma nova versão")
set(CPACK_PACKAGING_INSTALL_PREFIX /)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION database)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# The client library is loaded, so nobody sees that it is needed.
set(CPACK_DEBIAN_PACKAGE_DEPENDS libfbclient2)
# The engine for databases without server, SQL Server's driver, and the texts of Qt's dialogs are loaded at run time.
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "firebird3.0-server-core, qt6-translations-l10n")
set(CPACK_DEBIAN_PACKAGE_SUGGESTS "tdsodbc")
set(CPACK_DEBIAN_PACKAGE_CONTROL_EXTRA ${CMAKE_SOURCE_DIR}/recursos/deb/postrm)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
include(CPack)
