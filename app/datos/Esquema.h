#pragma once

namespace caja::app {

// The program's own tables (how change went back, voids, closings, keys,
// people, the trail, the journal's bookkeeping) and, on a server, its
// functions (the sender's batch receiver and the acts a till's login may
// only do through them), added to the component's schema so that both are
// created together in every database the program opens. Called once,
// before the first database is opened.
void agregarEsquema();

}  // namespace caja::app
