# wkd_recursos_windows(TARGET level description)
#
# Icon, version and manifest of a program; nothing on other systems. The level is asInvoker, or highestAvailable for one
# that writes into its own folder. The manifest makes the system's own texts UTF-8 (Windows 10 1903 and later).
function(wkd_recursos_windows alvo nivel descricao)
    if(NOT WIN32)
        return()
    endif()
    set(base ${CMAKE_CURRENT_BINARY_DIR}/${alvo})
    set(arquivo ${alvo}.exe)
    if(alvo MATCHES "^(.*)_com$")
        set(arquivo ${CMAKE_MATCH_1}.com)
    endif()
    set(pasta ${CMAKE_SOURCE_DIR}/recursos/windows)
    configure_file(${pasta}/programa.manifest.in ${base}.manifest @ONLY)
    configure_file(${pasta}/programa.rc.in ${base}.rc @ONLY)
    # Not as a source: the C++ compiler's options would reach the resource compiler.
    add_custom_command(OUTPUT ${base}.rc.o COMMAND ${CMAKE_RC_COMPILER} ${base}.rc ${base}.rc.o
                       DEPENDS ${base}.rc ${base}.manifest ${pasta}/atualizawkd.ico)
    target_sources(${alvo} PRIVATE ${base}.rc.o)
    target_link_options(${alvo} PRIVATE -s)
endfunction()
