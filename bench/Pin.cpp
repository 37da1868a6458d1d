// What one guess of a PIN costs: the Argon2id check of a PIN against the
// hash the program keeps, with the program's parameters. Exits 1 when the
// median of five checks is under half a second: a stolen hash must not give
// up a PIN of four digits in minutes.
#include <sodium.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <vector>

#include "app/datos/CostePin.h"

int main() {
  if (sodium_init() < 0)
    return 2;
  char hash[crypto_pwhash_STRBYTES];
  if (crypto_pwhash_str(hash, "975302", 6, caja::app::kOperacionesPin, caja::app::kMemoriaPin) != 0)
    return 2;
  std::vector<double> segundos;
  for (int i = 0; i < 5; ++i) {
    const auto inicio = std::chrono::steady_clock::now();
    const bool acierto = crypto_pwhash_str_verify(hash, "000000", 6) == 0;
    segundos.push_back(
        std::chrono::duration<double>(std::chrono::steady_clock::now() - inicio).count());
    if (acierto)
      return 2;
  }
  std::sort(segundos.begin(), segundos.end());
  const double mediana = segundos[2];
  std::printf("Un intento de PIN: %.3f s (mediana de 5; meta: al menos 0.5 s), %zu MiB\n", mediana,
              caja::app::kMemoriaPin >> 20);
  return mediana >= 0.5 ? 0 : 1;
}
