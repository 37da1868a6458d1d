#pragma once

#include <functional>

namespace caja {

// Runs a handler of a dialog. An error (a CajaError with its Spanish text, or
// any other) reaches the cashier through the host's message display and the
// dialog stays usable: it never reaches Qt, which cannot carry an exception
// through its event loop and would end the till with the sale in progress.
// A message is not shown again with the same text until the cashier has
// pressed a key or clicked since it closed, so that a handler failing each
// time the focus comes back cannot hold the dialog in a loop of messages.
void protegido(const std::function<void()>& manejador) noexcept;

// A slot for `connect` that runs `f` (which takes no arguments) through `protegido`.
template <class F>
auto protegerSlot(F f) {
  return [f = std::move(f)] { protegido(f); };
}

}  // namespace caja
