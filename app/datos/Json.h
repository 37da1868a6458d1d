#pragma once

#include <string>

namespace caja::app {

// A JSON string literal (RFC 8259): quotes, backslashes and control
// characters escaped, and any byte that is not UTF-8 as U+FFFD, so that the
// output always parses.
std::string json(const std::string& texto);
// A rate as the program writes it: the shortest text that reads back the same.
std::string textoDeTasa(double tasa);
// A CSV field (RFC 4180): quoted when it holds a comma, a quote or a line break.
std::string csv(const std::string& texto);

}  // namespace caja::app
