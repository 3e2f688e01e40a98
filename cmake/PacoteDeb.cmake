# The Debian package: program and what it writes live in one folder, /opt/AtualizaWKD. scripts/pacote-deb.sh packs it
# from the release build, whose preset names the folders.
set(deb ${CMAKE_SOURCE_DIR}/recursos/deb)
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME atualizawkd)
set(CPACK_PACKAGE_VENDOR "WKD Software")
set(CPACK_PACKAGE_CONTACT "WKD Software <suporte@wkd.invalid>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "atualiza o banco de dados para o dicionário de uma nova versão")
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION
"Compara o dicionário de um pacote de atualização com o do banco de dados
(Firebird ou SQL Server), cria as tabelas novas, altera as que mudaram e
refaz, com todas as suas linhas, as que não podem ser alteradas no lugar.
.
Tem um assistente, roda sem ninguém à frente, mostra antes o que vai fazer,
prova backups, ensaia a atualização numa cópia e relata o que fez. Os membros
do grupo atualizawkd podem atualizar.")
set(CPACK_PACKAGING_INSTALL_PREFIX /)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION database)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# The client library and libzip are loaded, so nobody sees that they are needed.
set(CPACK_DEBIAN_PACKAGE_DEPENDS "libfbclient2, libzip4, adduser")
# The engine for databases without server, SQL Server's driver, and the texts of Qt's dialogs are loaded at run time;
# gfix and isql-fb are what the manual uses.
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "firebird3.0-server-core, firebird3.0-utils, qt6-translations-l10n")
set(CPACK_DEBIAN_PACKAGE_SUGGESTS "tdsodbc")
set(CPACK_DEBIAN_PACKAGE_CONTROL_EXTRA ${deb}/postinst ${deb}/postrm)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

# What belongs to every package, and the manual with its pictures.
set(doc ${CMAKE_INSTALL_DATADIR}/doc/atualizawkd)
add_custom_command(OUTPUT ${CMAKE_BINARY_DIR}/changelog.gz COMMAND gzip -9nc ${deb}/changelog >${CMAKE_BINARY_DIR}/changelog.gz
                   DEPENDS ${deb}/changelog)
add_custom_target(changelog ALL DEPENDS ${CMAKE_BINARY_DIR}/changelog.gz)
install(FILES ${CMAKE_BINARY_DIR}/changelog.gz ${deb}/copyright ${CMAKE_SOURCE_DIR}/CHANGELOG.md
              ${CMAKE_SOURCE_DIR}/docs/manual.pt-BR.md ${CMAKE_SOURCE_DIR}/docs/json.md DESTINATION ${doc})
install(DIRECTORY ${CMAKE_SOURCE_DIR}/docs/imagens DESTINATION ${doc})
install(FILES ${deb}/lintian-overrides DESTINATION ${CMAKE_INSTALL_DATADIR}/lintian/overrides RENAME atualizawkd)
include(CPack)
