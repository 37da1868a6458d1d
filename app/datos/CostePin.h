#pragma once

#include <cstddef>

namespace caja::app {

// What a PIN's Argon2id hash costs: one guess takes at least half a second
// and 256 MiB on a till (bench_pin measures it), so that the 10,000 PINs of
// four digits take more than an hour and a half of one core. The hash text
// carries its own parameters: hashes made with other ones still verify.
inline constexpr unsigned long long kOperacionesPin = 4;
inline constexpr std::size_t kMemoriaPin = std::size_t{256} << 20;

}  // namespace caja::app
