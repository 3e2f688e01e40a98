#include "process/Sha256.h"

#include <algorithm>
#include <bit>
#include <cerrno>
#include <cstring>
#include <system_error>
#include <vector>

#include "process/EscritaSegura.h"

namespace wkd {

namespace {

constexpr std::uint32_t kConstantes[64] = {
    0x428a2f98, 0x71374491, 0xb5c0fbcf, 0xe9b5dba5, 0x3956c25b, 0x59f111f1, 0x923f82a4, 0xab1c5ed5,
    0xd807aa98, 0x12835b01, 0x243185be, 0x550c7dc3, 0x72be5d74, 0x80deb1fe, 0x9bdc06a7, 0xc19bf174,
    0xe49b69c1, 0xefbe4786, 0x0fc19dc6, 0x240ca1cc, 0x2de92c6f, 0x4a7484aa, 0x5cb0a9dc, 0x76f988da,
    0x983e5152, 0xa831c66d, 0xb00327c8, 0xbf597fc7, 0xc6e00bf3, 0xd5a79147, 0x06ca6351, 0x14292967,
    0x27b70a85, 0x2e1b2138, 0x4d2c6dfc, 0x53380d13, 0x650a7354, 0x766a0abb, 0x81c2c92e, 0x92722c85,
    0xa2bfe8a1, 0xa81a664b, 0xc24b8b70, 0xc76c51a3, 0xd192e819, 0xd6990624, 0xf40e3585, 0x106aa070,
    0x19a4c116, 0x1e376c08, 0x2748774c, 0x34b0bcb5, 0x391c0cb3, 0x4ed8aa4a, 0x5b9cca4f, 0x682e6ff3,
    0x748f82ee, 0x78a5636f, 0x84c87814, 0x8cc70208, 0x90befffa, 0xa4506ceb, 0xbef9a3f7, 0xc67178f2};

std::uint32_t Palavra(const unsigned char* bytes) {
    return static_cast<std::uint32_t>(bytes[0]) << 24 | static_cast<std::uint32_t>(bytes[1]) << 16 |
           static_cast<std::uint32_t>(bytes[2]) << 8 | bytes[3];
}

}  // namespace

void TSha256::Bloco(const unsigned char* bloco) {
    std::uint32_t w[64];
    for (int i = 0; i < 16; ++i) w[i] = Palavra(bloco + 4 * i);
    for (int i = 16; i < 64; ++i) {
        const auto s0 = std::rotr(w[i - 15], 7) ^ std::rotr(w[i - 15], 18) ^ w[i - 15] >> 3;
        const auto s1 = std::rotr(w[i - 2], 17) ^ std::rotr(w[i - 2], 19) ^ w[i - 2] >> 10;
        w[i] = w[i - 16] + s0 + w[i - 7] + s1;
    }
    auto [a, b, c, d, e, f, g, h] = estado_;
    for (int i = 0; i < 64; ++i) {
        const auto t1 =
            h + (std::rotr(e, 6) ^ std::rotr(e, 11) ^ std::rotr(e, 25)) + ((e & f) ^ (~e & g)) + kConstantes[i] + w[i];
        const auto t2 = (std::rotr(a, 2) ^ std::rotr(a, 13) ^ std::rotr(a, 22)) + ((a & b) ^ (a & c) ^ (b & c));
        h = g, g = f, f = e, e = d + t1, d = c, c = b, b = a, a = t1 + t2;
    }
    const std::uint32_t somas[] = {a, b, c, d, e, f, g, h};
    for (std::size_t i = 0; i < estado_.size(); ++i) estado_[i] += somas[i];
}

void TSha256::Soma(std::string_view bytes) {
    bytes_ += bytes.size();
    while (!bytes.empty()) {
        if (noResto_ == 0 && bytes.size() >= resto_.size()) {
            Bloco(reinterpret_cast<const unsigned char*>(bytes.data()));
            bytes.remove_prefix(resto_.size());
            continue;
        }
        const auto parte = std::min(bytes.size(), resto_.size() - noResto_);
        std::memcpy(resto_.data() + noResto_, bytes.data(), parte);
        bytes.remove_prefix(parte);
        noResto_ += parte;
        if (noResto_ < resto_.size()) return;
        Bloco(resto_.data());
        noResto_ = 0;
    }
}

std::string TSha256::Valor() {
    const std::uint64_t bits = bytes_ * 8;
    Soma("\x80");
    const std::string zero(1, '\0');
    while (noResto_ != 56) Soma(zero);
    std::string tamanho;
    for (int i = 56; i >= 0; i -= 8) tamanho += static_cast<char>(bits >> i);
    Soma(tamanho);
    std::string texto;
    for (const auto palavra : estado_)
        for (int i = 28; i >= 0; i -= 4) texto += "0123456789abcdef"[palavra >> i & 15];
    return texto;
}

std::string Sha256DoArquivo(const std::filesystem::path& arquivo,
                            const std::function<void(std::uintmax_t)>& acompanha) {
    const TArquivo aberto = AbreParaLer(arquivo, true);
    TSha256 soma;
    std::vector<char> pedaco(1 << 20);
    std::uintmax_t total = 0;
    while (const auto lidos = std::fread(pedaco.data(), 1, pedaco.size(), aberto.get())) {
        soma.Soma({pedaco.data(), lidos});
        if (acompanha) acompanha(total += lidos);
    }
    if (std::ferror(aberto.get())) throw std::system_error(errno, std::generic_category(), arquivo.string());
    return soma.Valor();
}

}  // namespace wkd
