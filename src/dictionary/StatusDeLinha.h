#pragma once

namespace wkd {

/// Whether a row with this status byte is part of the table: neither superseded (1), nor deleted (2), nor an unused
/// hole (0x20).
inline bool LinhaVisivel(unsigned status) { return (status & 0x23) == 0; }

}  // namespace wkd
