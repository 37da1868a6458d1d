#include "caja/host/HostSql.h"

#include <chrono>
#include <limits>
#include <thread>

#include "caja/base/Conversiones.h"
#include "caja/base/Decimal.h"
#include "caja/base/Texto.h"
#include "caja/host/ObjetosHost.h"
#include "caja/service/TransaccionHost.h"

namespace caja {

namespace {

constexpr const char* kFuente = "HostSql";
constexpr long kNoPuedeCrearObjeto = 429;

// A short pause that grows with each try and differs between tills, so that
// two tills that collided do not collide again in step.
void esperarAntesDelIntento(int intento) {
  const auto base = std::chrono::milliseconds(5 << std::min(intento, 6));
  const auto desfase = std::chrono::milliseconds(
      std::hash<std::thread::id>{}(std::this_thread::get_id()) % 7 +
      static_cast<long>(std::chrono::steady_clock::now().time_since_epoch().count() % 11));
  std::this_thread::sleep_for(base + desfase);
}

}  // namespace

std::shared_ptr<Objeto> HostSql::CrearObjeto(const std::string& clase) {
  if (equalsIgnoreCase(clase, "Empresa"))
    return std::make_shared<EmpresaHost>(*this);
  if (equalsIgnoreCase(clase, "Instanciador"))
    return std::make_shared<InstanciadorHost>(shared_from_this());
  if (equalsIgnoreCase(clase, "posExt"))
    return std::make_shared<PosExtHost>(shared_from_this());
  throw CajaError(kNoPuedeCrearObjeto, kFuente, "No se puede crear el objeto " + clase);
}

std::string HostSql::NumeroDB(const Variant& numero) {
  if (numero.isNull())
    return "NULL";
  if (numero.type() == VarType::Boolean)
    return numero.asBool() ? "1" : "0";
  return toDecimal(numero).toMachineText();
}

std::string HostSql::StringDB(const std::string& texto) {
  std::string literal(1, '\'');
  literal += replaceAll(texto, "'", "''");
  literal += '\'';
  return literal;
}

bool HostSql::ExisteProcedimiento(const std::string& nombre,
                                  const std::shared_ptr<Objeto>& /*dueno*/) {
  return procedimientos_.count(lowerAscii(nombre)) > 0;
}

void HostSql::Log(const std::string& mensaje) {
  ExecuteSQL("INSERT INTO hostLog (Fecha, Mensaje) VALUES (getdate(), ?)", {Variant(mensaje)});
}

Variant HostSql::VerificarUsuario(const std::string& mensaje) {
  return verificador_ ? verificador_(mensaje) : Variant(0);
}

std::shared_ptr<Objeto> HostSql::loadFileIcon(const std::string& archivo) {
  return std::make_shared<Imagen>(carpetaIconos_.empty() ? archivo
                                                         : carpetaIconos_ + "/" + archivo);
}

double HostSql::TipoCambioCaja() {
  const Variant tasa = ReadScalar("SELECT TipoCambioCaja FROM hostEmpresa WHERE id = 1");
  return tasa.isEmpty() || tasa.isNull() ? 0.0 : CDbl(tasa);
}

std::shared_ptr<caja::TemaUI> HostSql::TemaUI() {
  return tema_;
}

void HostSql::RegistrarProcedimiento(const std::string& nombre, Procedimiento procedimiento) {
  procedimientos_[lowerAscii(nombre)] = std::move(procedimiento);
}

void HostSql::SetVerificador(std::function<Variant(const std::string&)> verificador) {
  verificador_ = std::move(verificador);
}

void HostSql::SetCarpetaIconos(const std::string& carpeta) {
  carpetaIconos_ = carpeta;
}

void HostSql::SetTemaUI(std::shared_ptr<caja::TemaUI> tema) {
  tema_ = std::move(tema);
}

Variant HostSql::EjecutarProcedimiento(const std::string& nombre,
                                       std::vector<Variant>& argumentos) {
  auto it = procedimientos_.find(lowerAscii(nombre));
  if (it == procedimientos_.end())
    throw CajaError(err::kMetodoNoAdmitido, kFuente, "Procedimiento no definido: " + nombre);
  return it->second(argumentos);
}

void HostSql::Reintentando(const std::function<void()>& trabajo,
                           const std::function<void()>& antesDeReintentar, int intentos) {
  for (int intento = 1;; ++intento) {
    try {
      trabajo();
      return;
    } catch (const CajaError& e) {
      if (e.number() != kErrorConflicto || intento >= intentos)
        throw;
    }
    esperarAntesDelIntento(intento);
    if (antesDeReintentar)
      antesDeReintentar();
  }
}

void HostSql::EnTransaccion(const std::function<void()>& trabajo,
                            const std::function<void()>& antesDeReintentar, int intentos) {
  Reintentando(
      [&] {
        TransaccionHost transaccion(*this);
        trabajo();
        transaccion.commit();
      },
      antesDeReintentar, intentos);
}

std::vector<std::shared_ptr<Recordset>> HostSql::LeerJuntas(
    const std::vector<std::pair<std::string, Argumentos>>& consultas) {
  std::vector<std::shared_ptr<Recordset>> lecturas;
  for (const auto& [sql, args] : consultas)
    lecturas.push_back(openrecordset(sql, args));
  return lecturas;
}

Variant enteroComoVariant(long long n) {
  if (n >= std::numeric_limits<std::int32_t>::min() &&
      n <= std::numeric_limits<std::int32_t>::max())
    return Variant(static_cast<std::int32_t>(n));
  return Variant(static_cast<double>(n));
}

Currency monedaDeTexto(std::string_view texto) {
  Decimal dec;
  dec.negativo = !texto.empty() && texto.front() == '-';
  if (dec.negativo)
    texto.remove_prefix(1);
  const auto punto = texto.find('.');
  dec.digitos = std::string(texto.substr(0, punto));
  if (punto != std::string_view::npos) {
    dec.digitos += texto.substr(punto + 1);
    dec.escala = static_cast<int>(texto.size() - punto - 1);
  }
  if (dec.digitos.empty() || dec.digitos.find_first_not_of("0123456789") != std::string::npos)
    throw errorEjecucion(err::kTiposNoCoinciden);
  return dec.roundedHalfAway(4).toCurrency();
}

CajaError errorFueraDeRango(const std::string& fuente, const Argumentos& args) {
  std::string montos;
  for (const Variant& v : args) {
    if (v.type() != VarType::Currency)
      continue;
    montos += (montos.empty() ? "" : ", ") + v.asCurrency().toMachineText();
  }
  std::string texto =
      "Monto fuera del rango de la moneda (-922337203685477.5807 a "
      "922337203685477.5807)";
  if (!montos.empty())
    texto += ": " + montos;
  return CajaError(err::kDesbordamiento, fuente, texto);
}

}  // namespace caja
