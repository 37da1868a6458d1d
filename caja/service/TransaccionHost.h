#pragma once

#include "caja/base/Exporta.h"
#include "caja/service/Factoria.h"

namespace caja {

// One host database transaction around a piece of work: begun on
// construction, committed by `commit()`, rolled back when the guard goes out
// of scope uncommitted (an exception unwinding included). For hosts; the
// component itself never opens a transaction.
class CAJA_EXPORT TransaccionHost {
 public:
  explicit TransaccionHost(Factoria& host) : host_(host) { host_.BeginTrans(); }
  TransaccionHost(const TransaccionHost&) = delete;
  TransaccionHost& operator=(const TransaccionHost&) = delete;
  ~TransaccionHost() {
    if (!terminada_) {
      try {
        host_.Rollback();
      } catch (...) {
        // A destructor must not throw; the failed rollback leaves the
        // connection to the host's own recovery.
      }
    }
  }

  void commit() {
    host_.CommitTrans();
    terminada_ = true;
  }

 private:
  Factoria& host_;
  bool terminada_ = false;
};

}  // namespace caja
