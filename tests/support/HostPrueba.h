#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "caja/host/PostgresFactoria.h"
#include "caja/host/SqliteFactoria.h"
#include "caja/service/General.h"
#include "caja/service/Settings.h"
#include "tests/support/Ayudas.h"
#include "tests/support/Dobles.h"
#include "tests/support/FakeFactoria.h"

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

// The databases the end-to-end tests run on.
enum class Motor { Sqlite, Postgres };
std::vector<Motor> motores();
std::string nombreMotor(const ::testing::TestParamInfo<Motor>& info);
inline void PrintTo(Motor motor, std::ostream* os) {
  *os << (motor == Motor::Sqlite ? "SQLite" : "PostgreSQL");
}

// A throwaway database of its own on the test server, dropped afterwards.
// The server is the one named by CAJA_PRUEBA_PG (an administrator's URI,
// which scripts/test sets); without it `uri()` is empty.
class BasePostgresTemporal {
 public:
  BasePostgresTemporal();
  ~BasePostgresTemporal();
  BasePostgresTemporal(const BasePostgresTemporal&) = delete;
  BasePostgresTemporal& operator=(const BasePostgresTemporal&) = delete;
  const std::string& uri() const { return uri_; }

 private:
  std::string nombre_;
  std::string uri_;
};

// A fresh database for one test: a SQLite file, or a database on the test
// server (when there is none, `db` is null and the test is skipped).
class ConBase {
 public:
  explicit ConBase(Motor motor = Motor::Sqlite);
  // What `caja --db` takes to reach the same database.
  std::string destino() const;

  CarpetaTemporal carpeta;
  BasePostgresTemporal servidor;
  const Motor motor;
  std::shared_ptr<HostSql> db;

  long contar(const std::string& sqlCount);
  // Another connection to the same database, as a second till has.
  std::shared_ptr<HostSql> otraConexion() const;

 private:
  std::shared_ptr<HostSql> abrir() const;

 public:
  EntornoPrueba entorno{db};
};

// A test run once per database: TEST_P on a fixture derived from this, and
// CAJA_EN_CADA_MOTOR(Fixture) once after them.
class PorMotor : public ::testing::TestWithParam<Motor>, protected ConBase {
 protected:
  PorMotor() : ConBase(GetParam()) {}
  void SetUp() override {
    if (!db)
      GTEST_SKIP() << "sin servidor PostgreSQL de prueba (CAJA_PRUEBA_PG)";
    sembrar();
  }
  // What a fixture puts in the fresh database before each test.
  virtual void sembrar() {}
};

}  // namespace caja::test

#define CAJA_EN_CADA_MOTOR(Fixture)                                                      \
  INSTANTIATE_TEST_SUITE_P(Motores, Fixture, ::testing::ValuesIn(caja::test::motores()), \
                           caja::test::nombreMotor)
