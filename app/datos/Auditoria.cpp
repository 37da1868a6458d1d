#include "app/datos/Auditoria.h"

#include <sodium.h>
#include <QDateTime>
#include <map>

#include "caja/base/Conversiones.h"
#include "caja/host/PostgresFactoria.h"
#include "caja/service/HostUtil.h"

namespace caja::app {

namespace {

std::string hex(const unsigned char* bytes, std::size_t n) {
  std::string texto(n * 2 + 1, '\0');
  sodium_bin2hex(texto.data(), texto.size(), bytes, n);
  texto.pop_back();
  return texto;
}

void campo(std::string& texto, const std::string& valor) {
  texto += std::to_string(valor.size()) + ':' + valor + ';';
}

}  // namespace

std::string hashDe(const Asiento& a) {
  std::string texto;
  for (const std::string& valor :
       {std::to_string(a.id), a.fecha, std::to_string(a.maquina), a.cajero, a.aprobador, a.accion,
        a.detalle, a.movimiento ? std::to_string(*a.movimiento) : std::string(),
        a.monto.toMachineText(), a.origen, a.hashPrevio})
    campo(texto, valor);
  // Rows written before the server kept who sent them hash as they did.
  if (!a.login.empty() || !a.fechaServidor.empty()) {
    campo(texto, a.login);
    campo(texto, a.fechaServidor);
  }
  unsigned char resumen[crypto_hash_sha256_BYTES];
  crypto_hash_sha256(resumen, reinterpret_cast<const unsigned char*>(texto.data()), texto.size());
  return hex(resumen, sizeof resumen);
}

void anotar(HostSql& db, Asiento a) {
  if (dynamic_cast<PostgresFactoria*>(&db)) {
    db.ReadScalar("SELECT caja_anotar(?, ?, ?, ?, ?, ?, ?, ?, ?)",
                  {a.fecha, a.maquina, a.cajero, a.aprobador, a.accion, a.detalle,
                   a.movimiento ? Variant(*a.movimiento) : Variant::Null(), a.monto, a.origen});
    return;
  }
  auto ultima = db.openrecordset("SELECT id, Hash FROM hostAuditoria ORDER BY id DESC LIMIT 1");
  a.id = ultima->Eof() ? 1 : CLng(ultima->Fields("id")) + 1;
  a.hashPrevio = ultima->Eof() ? kHashInicial : CStr(ultima->Fields("Hash"));
  if (a.fecha.empty())
    a.fecha = QDateTime::currentDateTime().toString("yyyy-MM-dd HH:mm:ss").toStdString();
  a.hash = hashDe(a);
  db.ExecuteSQL(
      "INSERT INTO hostAuditoria (id, Fecha, MachineID, Cajero, Aprobador, Accion, Detalle, "
      "TransID, Monto, Origen, HashPrevio, Hash) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)",
      {static_cast<std::int32_t>(a.id), a.fecha, a.maquina, a.cajero, a.aprobador, a.accion,
       a.detalle, a.movimiento ? Variant(*a.movimiento) : Variant::Null(), a.monto, a.origen,
       a.hashPrevio, a.hash});
}

void anotarAparte(HostSql& db, const Asiento& a) {
  db.EnTransaccion([&] { anotar(db, a); });
}

std::vector<Asiento> asientos(HostSql& db, std::int64_t despuesDe) {
  std::vector<Asiento> lista;
  auto rs = db.openrecordset("SELECT * FROM hostAuditoria WHERE id > ? ORDER BY id",
                             {static_cast<std::int32_t>(despuesDe)});
  for (; !rs->Eof(); rs->MoveNext()) {
    const Variant mov = rs->Fields("TransID");
    lista.push_back(
        {CLng(rs->Fields("id")), CStr(rs->Fields("Fecha")),
         static_cast<std::int32_t>(CLng(rs->Fields("MachineID"))), CStr(rs->Fields("Cajero")),
         CStr(rs->Fields("Aprobador")), CStr(rs->Fields("Accion")), CStr(rs->Fields("Detalle")),
         mov.isNull() ? std::nullopt
                      : std::optional<std::int32_t>(static_cast<std::int32_t>(CLng(mov))),
         NzMoneda(rs->Fields("Monto")), CStr(rs->Fields("Origen")), CStr(rs->Fields("HashPrevio")),
         CStr(rs->Fields("Hash")), CStr(rs->Fields("Login")), CStr(rs->Fields("FechaServidor"))});
  }
  return lista;
}

Verificacion verificar(const std::vector<Asiento>& filas) {
  Verificacion v;
  std::string previo = kHashInicial;
  for (const Asiento& a : filas) {
    const std::int64_t esperada = v.filas + 1;
    if (a.id != esperada) {
      v.rotura = Rotura{esperada, "falta: la cadena salta de la fila " + std::to_string(v.filas) +
                                      " a la " + std::to_string(a.id)};
      return v;
    }
    if (a.hashPrevio != previo) {
      v.rotura = Rotura{a.id, "no sigue a la fila anterior: una de las dos fue cambiada"};
      return v;
    }
    if (hashDe(a) != a.hash) {
      v.rotura = Rotura{a.id, "fue cambiada: su contenido no corresponde a su hash"};
      return v;
    }
    previo = a.hash;
    ++v.filas;
  }
  return v;
}

std::vector<std::string> filasAjenas(HostSql& db, const std::vector<Asiento>& filas) {
  std::map<std::string, std::int32_t> maquinas;
  for (auto rs = db.openrecordset("SELECT Login, MachineID FROM hostLogins"); !rs->Eof();
       rs->MoveNext())
    maquinas[CStr(rs->Fields(0))] = static_cast<std::int32_t>(CLng(rs->Fields(1)));
  std::vector<std::string> ajenas;
  for (const Asiento& a : filas) {
    const auto it = maquinas.find(a.login);
    if (it != maquinas.end() && it->second != a.maquina)
      ajenas.push_back("la fila " + std::to_string(a.id) + " es de la máquina " +
                       std::to_string(a.maquina) + " y la escribió " + a.login +
                       ", que es la caja de la máquina " + std::to_string(it->second));
  }
  return ajenas;
}

}  // namespace caja::app
