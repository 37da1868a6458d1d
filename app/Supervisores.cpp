#include "app/Supervisores.h"

#include <QCryptographicHash>
#include <QInputDialog>
#include <QRandomGenerator>
#include <iostream>

#include "caja/base/Conversiones.h"

namespace caja::app {

namespace {

std::string hashDe(const std::string& sal, const std::string& pin) {
  return QCryptographicHash::hash(QByteArray::fromStdString(sal + pin), QCryptographicHash::Sha256)
      .toHex()
      .toStdString();
}

std::string salNueva() {
  QByteArray bytes(16, '\0');
  QRandomGenerator::system()->fillRange(reinterpret_cast<quint32*>(bytes.data()), 4);
  return bytes.toHex().toStdString();
}

}  // namespace

void agregarSupervisor(HostSql& db, const std::string& nombre, const std::string& pin, int nivel) {
  const std::string sal = salNueva();
  db.ExecuteSQL(
      "INSERT INTO hostSupervisores (Nombre, Sal, Hash, Nivel) VALUES (?, ?, ?, ?) "
      "ON CONFLICT (Nombre) DO UPDATE SET Sal = excluded.Sal, Hash = excluded.Hash, "
      "Nivel = excluded.Nivel",
      {nombre, sal, hashDe(sal, pin), nivel});
}

int nivelDePin(HostSql& db, const std::string& pin) {
  int nivel = 0;
  auto rs = db.openrecordset("SELECT Sal, Hash, Nivel FROM hostSupervisores");
  for (; !rs->Eof(); rs->MoveNext())
    if (hashDe(CStr(rs->Fields("Sal")), pin) == CStr(rs->Fields("Hash")))
      nivel = std::max(nivel, static_cast<int>(CLng(rs->Fields("Nivel"))));
  return nivel;
}

void instalarVerificador(HostSql& db, bool conPantalla) {
  db.SetVerificador([&db, conPantalla](const std::string& mensaje) {
    std::string pin;
    if (conPantalla) {
      bool ok = false;
      pin = QInputDialog::getText(nullptr, "Autorización", QString::fromStdString(mensaje),
                                  QLineEdit::Password, {}, &ok)
                .toStdString();
      if (!ok)
        return Variant(0);
    } else {
      std::cerr << mensaje << " PIN: ";
      std::getline(std::cin, pin);
    }
    return Variant(nivelDePin(db, pin));
  });
}

}  // namespace caja::app
