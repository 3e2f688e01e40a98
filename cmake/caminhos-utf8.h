// Included before everything else where the program is built for Windows. Text is UTF-8 everywhere in this program, but
// libstdc++ takes the bytes of a narrow text one by one for the characters of a path there; giving one back, it makes
// UTF-8. Without this, every path made of a text would need a call that no compiler asks for.
#pragma once
#ifdef __cplusplus
#include <filesystem>

template <>
inline auto std::filesystem::path::_S_convert<char>(const char* inicio, const char* fim) {
    return __detail::__wstr_from_utf8(std::string_view(inicio, static_cast<std::size_t>(fim - inicio)));
}
#endif
