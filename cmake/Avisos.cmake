# Warnings and sanitizers of every target of the project; a warning is an error.
add_library(wkd_avisos INTERFACE)
if(MSVC)
    target_compile_options(wkd_avisos INTERFACE /W4 /WX /utf-8)
else()
    target_compile_options(wkd_avisos INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Werror)
    if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
        # GCC 12 sees overlaps and overflows that are not there in std::string's operator+ and replace.
        target_compile_options(wkd_avisos INTERFACE -Wno-restrict -Wno-stringop-overflow -Wno-array-bounds)
    endif()
endif()

if(WKD_FUZZ)
    add_compile_options(-fsanitize=fuzzer-no-link)
endif()
if(WKD_SANITIZE OR WKD_FUZZ)
    add_compile_options(-fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer -O1)
    add_link_options(-fsanitize=address,undefined)
endif()
