#pragma once

#include <memory>

#include "host/SqliteFactoria.h"
#include "service/General.h"
#include "service/Settings.h"
#include "tests/support/Ayudas.h"
#include "tests/support/FakeFactoria.h"
#include "tests/support/HostUtilGuion.h"

namespace caja::test {

// Installs a host as the component's `gFactoria`, with settings in memory and
// a scripted utility object, and clears the process-wide state afterwards.
class EntornoPrueba {
 public:
  explicit EntornoPrueba(std::shared_ptr<Factoria> host);
  ~EntornoPrueba();

  std::shared_ptr<MemoriaSettingsStore> settings = std::make_shared<MemoriaSettingsStore>();
  std::shared_ptr<HostUtilGuion> util = std::make_shared<HostUtilGuion>();
};

// A recording fake host installed for one test.
class ConFake {
 public:
  std::shared_ptr<FakeFactoria> fake = std::make_shared<FakeFactoria>();
  EntornoPrueba entorno{fake};
};

// A fresh SQLite file installed for one test.
class ConSqlite {
 public:
  CarpetaTemporal carpeta;
  std::shared_ptr<SqliteFactoria> db = SqliteFactoria::Abrir((carpeta.ruta() / "caja.db").string());
  EntornoPrueba entorno{db};

  long contar(const std::string& sqlCount);
};

}  // namespace caja::test
