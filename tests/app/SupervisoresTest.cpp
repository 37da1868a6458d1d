#include "app/datos/Supervisores.h"

#include <gtest/gtest.h>

#include "caja/base/Conversiones.h"
#include "tests/support/HostPrueba.h"

namespace caja::app {
namespace {

// A new PIN is kept as Argon2id and answers its supervisor's level. A row of
// an older version (a salted SHA-256; this one is sha256sum of "ab1357")
// still answers until its supervisor is changed, which rewrites it as Argon2id.
TEST(Supervisores, NewPinsAreArgon2idAndOldRowsWorkUntilChanged) {
  test::ConBase base;
  HostSql& db = *base.db;
  agregarSupervisor(db, "ANA", "246802", 7);
  db.ExecuteSQL(
      "INSERT INTO hostSupervisores (Nombre, Sal, Hash, Nivel) VALUES ('LUIS', 'ab', "
      "'8b08ef8a217a9a450d61bcf7a583f8ce880de30675574016557db6c6d6767679', 3)");
  const struct {
    const char* pin;
    int nivel;
  } casos[] = {{"246802", 7}, {"1357", 3}, {"2469", 0}, {"", 0}, {"ab1357", 0}};
  for (const auto& c : casos)
    EXPECT_EQ(nivelDePin(db, c.pin), c.nivel) << c.pin;
  EXPECT_EQ(CStr(db.ReadScalar("SELECT Hash FROM hostSupervisores WHERE Nombre = 'ANA'"))
                .rfind("$argon2id$", 0),
            0u);

  agregarSupervisor(db, "LUIS", "975302", 4);
  EXPECT_EQ(CStr(db.ReadScalar("SELECT Sal FROM hostSupervisores WHERE Nombre = 'LUIS'")), "");
  EXPECT_EQ(nivelDePin(db, "1357"), 0);
  EXPECT_EQ(nivelDePin(db, "975302"), 4);
}

}  // namespace
}  // namespace caja::app
