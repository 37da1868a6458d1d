#include "app/controles/Autorizacion.h"

#include <QComboBox>
#include <QDateTime>
#include <QDialog>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <algorithm>
#include <cstdio>
#include <iostream>

#include <unistd.h>

#include "app/datos/Auditoria.h"
#include "app/acciones/EstaCaja.h"
#include "app/datos/Supervisores.h"
#include "caja/base/Conversiones.h"
#include "caja/base/Texto.h"
#include "caja/service/HostUtil.h"
#include "caja/service/Settings.h"

namespace caja::app {

namespace {

std::int64_t ajuste(const char* clave, std::int64_t defecto) {
  return CLng(Variant(lmGetSettingCur(kAppZOR, "Seguridad", clave, Currency::fromUnits(defecto))));
}

std::string ahora(std::int64_t masMinutos = 0) {
  return QDateTime::currentDateTime()
      .addSecs(masMinutos * 60)
      .toString("yyyy-MM-dd HH:mm:ss")
      .toStdString();
}

std::int64_t limiteDeIntentos() {
  return std::max<std::int64_t>(1, ajuste("IntentosPin", 5));
}

// "supervisor ANA": messages put "el" or "del" before it.
std::string quien(Rol rol, const std::string& nombre) {
  return std::string(nombreRol(rol)) + " " + nombre;
}

// One line of standard input, without the line end a terminal may leave;
// the question is shown to a person at a terminal only.
std::string lineaDeEntrada(const std::string& pregunta) {
  if (isatty(STDIN_FILENO))
    std::cerr << pregunta << ": " << std::flush;
  std::string linea;
  if (!std::getline(std::cin, linea))
    throw Rechazo("Falta " + pregunta + " en la entrada estándar: nada se guardó");
  if (!linea.empty() && linea.back() == '\r')
    linea.pop_back();
  return linea;
}

struct Credencial {
  std::string nombre, pin;
};

// The small dialog that asks who and their PIN, saying what for; nothing
// when cancelled.
std::optional<Credencial> credencialEnDialogo(const std::string& titulo, const std::string& para,
                                              const std::vector<std::string>& nombres,
                                              const std::string& dado) {
  QDialog dialogo;
  dialogo.setWindowTitle(QString::fromStdString(titulo));
  auto* forma = new QFormLayout(&dialogo);
  forma->addRow(new QLabel(QString::fromStdString(para), &dialogo));
  auto* nombre = new QComboBox(&dialogo);
  for (const auto& n : nombres)
    nombre->addItem(QString::fromStdString(n));
  if (!dado.empty())
    nombre->setCurrentText(QString::fromStdString(dado));
  auto* pin = new QLineEdit(&dialogo);
  pin->setEchoMode(QLineEdit::Password);
  forma->addRow("Nombre", nombre);
  forma->addRow("PIN", pin);
  auto* botones = new QDialogButtonBox(&dialogo);
  botones->addButton("&Aceptar", QDialogButtonBox::AcceptRole);
  botones->addButton("&Cancelar", QDialogButtonBox::RejectRole);
  forma->addRow(botones);
  QObject::connect(botones, &QDialogButtonBox::accepted, &dialogo, &QDialog::accept);
  QObject::connect(botones, &QDialogButtonBox::rejected, &dialogo, &QDialog::reject);
  pin->setFocus();
  if (dialogo.exec() != QDialog::Accepted)
    return std::nullopt;
  return Credencial{nombre->currentText().toStdString(), pin->text().toStdString()};
}

// Who and their PIN: the dialog with a screen, else the name given and a
// line of standard input.
Credencial credencial(Contexto& c, Rol rol, const std::string& titulo, const std::string& para,
                      const std::string& dado) {
  if (c.conPantalla) {
    const auto dicha = credencialEnDialogo(titulo, para, nombresDe(*c.db, rol), dado);
    if (!dicha)
      throw Rechazo(titulo + ": cancelado, nada se guardó");
    return *dicha;
  }
  return {dado, lineaDeEntrada("el PIN del " + quien(rol, dado))};
}

Asiento asientoDe(Contexto& c, Rol rol, const std::string& nombre, const char* accion) {
  Asiento a;
  a.maquina = maquinaDe(c);
  (rol == Rol::Cajero ? a.cajero : a.aprobador) = nombre;
  a.accion = accion;
  return a;
}

// A wrong PIN: counted, recorded, and at the limit the person is locked out
// for a while; all of it stays even though the act is refused.
[[noreturn]] void fallo(Contexto& c, Rol rol, const std::string& nombre) {
  const std::int64_t limite = limiteDeIntentos();
  std::int64_t fallos = 0;
  std::string hasta;
  c.db->EnTransaccion([&] {
    fallos = NzLong(c.db->ReadScalar("SELECT Fallos FROM hostIntentos WHERE Rol = ? AND Nombre = ?",
                                     {nombreRol(rol), nombre})) +
             1;
    hasta = contarFallo(*c.db, rol, nombre);
    Asiento a = asientoDe(c, rol, nombre, "pin fallido");
    a.detalle = "intento " + std::to_string(fallos) + " de " + std::to_string(limite);
    anotar(*c.db, a);
    if (!hasta.empty()) {
      a.accion = "bloqueo";
      a.detalle = "hasta " + hasta;
      anotar(*c.db, a);
    }
  });
  if (!hasta.empty())
    throw Rechazo("PIN incorrecto: " + std::to_string(fallos) + " seguidos, el " +
                  quien(rol, nombre) + " queda bloqueado hasta " + hasta + "; nada se guardó");
  throw Rechazo("PIN incorrecto del " + quien(rol, nombre) + ": nada se guardó");
}

// The registered person whose PIN this is, or a refusal.
Persona verificada(Contexto& c, Rol rol, const Credencial& dicha) {
  const auto persona = personaDe(*c.db, rol, dicha.nombre);
  if (!persona)
    throw Rechazo("No hay ningún " + std::string(nombreRol(rol)) + " llamado " + dicha.nombre +
                  ": nada se guardó");
  auto rs = c.db->openrecordset(
      "SELECT Fallos, BloqueadoHasta FROM hostIntentos WHERE Rol = ? AND Nombre = ?",
      {nombreRol(rol), persona->nombre});
  const std::string hasta = rs->Eof() ? "" : CStr(rs->Fields("BloqueadoHasta"));
  if (hasta > ahora())
    throw Rechazo("El " + quien(rol, persona->nombre) + " está bloqueado hasta " + hasta +
                  " por PIN incorrectos: nada se guardó");
  if (!pinCoincide(*persona, dicha.pin))
    fallo(c, rol, persona->nombre);
  if (!rs->Eof() && (CLng(rs->Fields("Fallos")) > 0 || !hasta.empty()))
    // Set back, never deleted: a till's login may not delete the counts.
    c.db->ExecuteSQL(
        "UPDATE hostIntentos SET Fallos = 0, BloqueadoHasta = '' WHERE Rol = ? AND Nombre = ?",
        {nombreRol(rol), persona->nombre});
  return *persona;
}

}  // namespace

std::string cajeroDe(Contexto& c) {
  const auto dado = c.args.valor("operador");
  if (CLng(c.db->ReadScalar("SELECT COUNT(*) FROM hostCajeros")) == 0)
    return dado.value_or("CAJERO");
  if (!dado && !c.conPantalla)
    throw ErrorUso("La tienda tiene cajeros registrados: indique --operador NOMBRE y su PIN");
  return verificada(
             c, Rol::Cajero,
             credencial(c, Rol::Cajero, "Cajero", "¿Quién atiende la caja?", dado.value_or("")))
      .nombre;
}

bool haySupervisores(Contexto& c) {
  return CLng(c.db->ReadScalar("SELECT COUNT(*) FROM hostSupervisores")) > 0;
}

std::string aprobacion(Contexto& c, const std::string& que, int nivel) {
  if (!haySupervisores(c))
    throw Rechazo("Para " + que +
                  " hace falta un supervisor y no hay ninguno: regístrelo con caja supervisor "
                  "--agregar NOMBRE; nada se guardó");
  const auto dado = c.args.valor("autoriza");
  if (!dado && !c.conPantalla)
    throw Rechazo("Para " + que +
                  " hace falta la autorización de un supervisor: --autoriza NOMBRE y su PIN en "
                  "la entrada estándar; nada se guardó");
  const Persona p =
      verificada(c, Rol::Supervisor,
                 credencial(c, Rol::Supervisor, "Autorización",
                            "Para " + que + " hace falta la autorización de un supervisor",
                            dado.value_or("")));
  if (p.nivel < nivel)
    throw Rechazo("El supervisor " + p.nombre + " (nivel " + std::to_string(p.nivel) +
                  ") no puede autorizar " + que + ": hace falta nivel " + std::to_string(nivel) +
                  "; nada se guardó");
  return p.nombre;
}

std::string contarFallo(HostSql& db, Rol rol, const std::string& nombre) {
  const std::int64_t minutos = std::max<std::int64_t>(1, ajuste("MinutosBloqueo", 15));
  const std::int64_t fallos =
      NzLong(db.ReadScalar("SELECT Fallos FROM hostIntentos WHERE Rol = ? AND Nombre = ?",
                           {nombreRol(rol), nombre})) +
      1;
  const std::string hasta = fallos >= limiteDeIntentos() ? ahora(minutos) : "";
  db.ExecuteSQL(
      "INSERT INTO hostIntentos (Rol, Nombre, Fallos, BloqueadoHasta) VALUES (?, ?, ?, ?) "
      "ON CONFLICT (Rol, Nombre) DO UPDATE SET Fallos = excluded.Fallos, "
      "BloqueadoHasta = excluded.BloqueadoHasta",
      {nombreRol(rol), nombre, static_cast<std::int32_t>(hasta.empty() ? fallos : 0), hasta});
  return hasta;
}

void contarEnServidor(HostSql& servidor, const Asiento& a) {
  const Rol rol = a.aprobador.empty() ? Rol::Cajero : Rol::Supervisor;
  const std::string& nombre = a.aprobador.empty() ? a.cajero : a.aprobador;
  if (nombre.empty())
    return;
  if (a.accion == "pin fallido") {
    // The till's own last allowed failure comes with its own lockout row,
    // which locks the person on the server: nothing to count twice.
    int n = 0, limite = 0;
    if (std::sscanf(a.detalle.c_str(), "intento %d de %d", &n, &limite) == 2 && n >= limite)
      return;
    const std::string hasta = contarFallo(servidor, rol, nombre);
    if (hasta.empty())
      return;
    Asiento bloqueo = a;
    bloqueo.fecha.clear();
    bloqueo.origen.clear();
    bloqueo.accion = "bloqueo";
    bloqueo.detalle = "hasta " + hasta + " (PIN incorrectos en las cajas)";
    anotar(servidor, bloqueo);
  } else if (a.accion == "bloqueo" && a.detalle.rfind("hasta ", 0) == 0) {
    // The later of the two locks holds, and the count starts again.
    servidor.ExecuteSQL(
        "INSERT INTO hostIntentos (Rol, Nombre, Fallos, BloqueadoHasta) VALUES (?, ?, 0, ?) "
        "ON CONFLICT (Rol, Nombre) DO UPDATE SET Fallos = 0, BloqueadoHasta = CASE WHEN "
        "hostIntentos.BloqueadoHasta > excluded.BloqueadoHasta THEN hostIntentos.BloqueadoHasta "
        "ELSE excluded.BloqueadoHasta END",
        {nombreRol(rol), nombre, a.detalle.substr(6, 19)});
  }
}

int nivelExigido(const char* clave) {
  return static_cast<int>(std::clamp<std::int64_t>(ajuste(clave, 5), 0, 9));
}

Currency diferenciaTolerada() {
  return lmGetSettingCur(kAppZOR, "Seguridad", "DiferenciaCierre", Currency{});
}

std::string nuevoPin() {
  const std::string pin = lineaDeEntrada("el PIN nuevo");
  // Six unless the shop lowers it, never under four.
  const std::int64_t minimo = std::max<std::int64_t>(4, ajuste("LargoMinimoPin", 6));
  if (static_cast<std::int64_t>(largoUtf8(pin)) < minimo)
    throw ErrorUso("El PIN debe tener al menos " + std::to_string(minimo) + " caracteres");
  return pin;
}

std::int32_t maquinaDe(Contexto& c) {
  if (const auto m = maquinaElegida(c))
    return *m;
  const auto s = c.args.entero("sesion", 1, kMaximo32);
  auto rs = s ? c.db->openrecordset("SELECT MachineID FROM SesionesPOS WHERE SessionID = ?",
                                    {static_cast<std::int32_t>(*s)})
              : c.db->openrecordset("SELECT MachineID FROM SesionesPOS");
  std::int32_t maquina = 0;
  int abiertas = 0;
  for (; !rs->Eof(); rs->MoveNext(), ++abiertas)
    maquina = NzLong(rs->Fields("MachineID"));
  return abiertas == 1 ? maquina : 0;
}

}  // namespace caja::app
