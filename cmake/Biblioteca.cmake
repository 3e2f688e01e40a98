# wkd_biblioteca(NAME [LINKS lib...] [PRIVATE lib...] [PRECOMPILED header...])
#
# One library a folder. Its only public include directory is the folder itself, so a header of a folder that is not
# linked cannot be found; and LINKS takes only targets that exist already, so an arrow upwards fails at configuration.
function(wkd_biblioteca nome)
    cmake_parse_arguments(ARG "" "" "LINKS;PRIVATE;PRECOMPILED" ${ARGN})
    foreach(abaixo IN LISTS ARG_LINKS)
        if(NOT TARGET ${abaixo})
            message(FATAL_ERROR "${nome} links ${abaixo}, which does not stand below it")
        endif()
    endforeach()
    file(GLOB_RECURSE fontes CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*.cpp ${CMAKE_CURRENT_SOURCE_DIR}/*.h)
    list(FILTER fontes EXCLUDE REGEX "/main\\.cpp$")
    add_library(${nome} STATIC ${fontes})
    target_include_directories(${nome} PUBLIC ${CMAKE_CURRENT_SOURCE_DIR})
    target_link_libraries(${nome} PUBLIC ${ARG_LINKS} PRIVATE wkd_avisos ${ARG_PRIVATE})
    wkd_precompila(${nome} ${ARG_PRECOMPILED})
endfunction()
