# wkd_embute(TARGET file NAME)
#
# Puts the text of a file into the target as wkd::NAME, a std::string_view constant.
function(wkd_embute alvo arquivo nome)
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${arquivo})
    file(READ ${arquivo} texto)
    set(fonte ${CMAKE_CURRENT_BINARY_DIR}/${nome}.cpp)
    file(GENERATE OUTPUT ${fonte} CONTENT
"#include <string_view>
namespace wkd {
extern const std::string_view ${nome};
const std::string_view ${nome} = R\"texto(${texto})texto\";
}  // namespace wkd
")
    target_sources(${alvo} PRIVATE ${fonte})
endfunction()
