#include "caja/base/Conversiones.h"
#include "caja/base/Formato.h"
#include "caja/dialogs/modelo/CobroVarelta.h"
#include "caja/service/General.h"
#include "caja/service/HostUtil.h"

namespace caja {

namespace {

// A payment line with the particulars the cashier recorded for its input.
std::shared_ptr<CDetalleIngreso> nuevaLinea(const std::string& medio, Currency monto,
                                            Currency nominal,
                                            const std::shared_ptr<CDetalleIngreso>& particulares) {
  auto d = std::make_shared<CDetalleIngreso>();
  if (particulares) {
    d->IdTitular = particulares->IdTitular;
    d->NumeroCuenta = particulares->NumeroCuenta;
    d->NumeroDocumento = particulares->NumeroDocumento;
    d->ClaveAutorizacion = particulares->ClaveAutorizacion;
    d->CodigoEmisor = particulares->CodigoEmisor;
    d->Denominaciones = particulares->Denominaciones;
    d->DetalleConfirmacion = particulares->DetalleConfirmacion;
  }
  d->medio = medio;
  d->Monto = monto;
  d->montoNominal = nominal;
  return d;
}

std::shared_ptr<CDetalleIngreso> primeraDeMedio(const Collection<CDetalleIngreso>& lineas,
                                                const std::string& medio) {
  for (const auto& d : lineas)
    if (d->medio == medio)
      return d;
  return nullptr;
}

// The first converted line: the one whose amount differs from its nominal.
std::shared_ptr<CDetalleIngreso> primeraConvertida(const Collection<CDetalleIngreso>& lineas) {
  for (const auto& d : lineas)
    if (d->Monto != d->montoNominal)
      return d;
  return nullptr;
}

std::string enMoneda(Currency c) {
  return Format(Variant(c), kFormatoMoneda);
}

}  // namespace

double CobroVarelta::tolerancia() const {
  double t = opciones.Tolerancia.toDouble();
  if (t != 0.0)
    return t;
  t = tipoCambio / 200;
  if (tipoCambio == 1.0)
    t = 0.01;
  return t < 0.01 ? 0.01 : t;
}

std::shared_ptr<CVarelta> CobroVarelta::LlenarVarelta(Vuelto& vuelto) {
  if (resultado)
    return resultado;
  const double tol = tolerancia();
  Currency recibido = TotalRecibido();
  if (Abs(neto - recibido).toDouble() < tol)
    recibido = neto;
  auto mov = std::make_shared<CVarelta>();
  mov->Vuelto = recibido - neto;
  if (recibido < neto - Currency::fromRaw(100)) {
    hostUtil().MostrarMensaje("Le faltan " + enMoneda(neto - recibido) +
                              " para completar el monto");
    return nullptr;
  }
  if (mov->Vuelto > Currency{}) {
    Currency acreditable;
    if (!vuelto.detallarVuelto(*this, mov->Vuelto, acreditable))
      return nullptr;
    mov->MontoAcreditable = acreditable;
    mov->acreditarVuelto = acreditable > Currency{};
  }
  Currency total;
  if (!efectivo.isZero()) {
    mov->colDetalles->Add(nuevaLinea("EFE", efectivo, efectivo, particularesEfectivo));
    total = efectivo;
  }
  for (std::size_t i = 0; i < medios.size(); ++i) {
    if (medios[i].valor.isZero())
      continue;
    auto linea =
        nuevaLinea(medios[i].Codigo, valorEnMN(i), medios[i].valor, medios[i].particulares);
    mov->colDetalles->Add(linea);
    total += linea->Monto;
  }
  if (mov->Vuelto > Currency{}) {
    const auto cambio = vuelto.detalles();
    for (const auto& c : *cambio) {
      total -= Abs(c->Monto);
      if (auto pago = primeraDeMedio(*mov->colDetalles, c->medio)) {
        pago->Monto -= Abs(c->Monto);
        pago->montoNominal -= Abs(c->montoNominal);
      } else {
        // Change in a method not used for paying becomes a line of its own.
        mov->colDetalles->Add(c);
      }
    }
  }
  Currency resta = neto - total;
  if (!resta.isZero() && Abs(resta).toDouble() <= tol) {
    // Conversion rounding goes into a foreign-currency line, never a national one.
    if (auto convertida = primeraConvertida(*mov->colDetalles)) {
      convertida->Monto += resta;
      resta = Currency{};
    }
  }
  if (resta > Currency{}) {
    hostUtil().MostrarMensaje("Faltan " + enMoneda(resta) + " para completar el monto.");
    return nullptr;
  }
  Currency suma;
  for (const auto& d : *mov->colDetalles)
    suma += d->Monto;
  mov->Debitos = suma;
  if (suma < Currency{}) {
    mov->Creditos = -suma;
    mov->Debitos = Currency{};
  }
  mov->montoIGTF = valorIGTF();
  if (!validarEnHost(mov))
    return nullptr;
  return mov;
}

namespace {

// The host's log, which must not stop the acceptance when it fails itself.
void registrarEnHost(const std::string& texto) noexcept {
  try {
    factoria().Log(texto);
  } catch (...) {
    // Nothing more to be done with a log that cannot be written.
  }
}

// Runs the host's "ValidarVarelta"; false, logged and shown, when it fails.
bool ejecutarValidarVarelta(PosExt& ext, std::vector<Variant>& argumentos) {
  try {
    ext.Run("ValidarVarelta", argumentos);
    return true;
  } catch (const std::exception& e) {
    const std::string texto = "ERROR: " + descripcionDe(e) + " en ValidarVarelta";
    registrarEnHost(texto);
    hostUtil().MostrarMensaje(texto);
    return false;
  }
}

}  // namespace

bool CobroVarelta::validarEnHost(std::shared_ptr<CVarelta>& mov) const {
  try {
    Factoria& host = factoria();
    auto ext = crearObjeto<PosExt>(host, "posExt");
    if (!host.ExisteProcedimiento("ValidarVarelta", ext))
      return true;
    std::vector<Variant> argumentos{Variant(mov)};
    if (!ejecutarValidarVarelta(*ext, argumentos))
      return false;
    // The procedure may hand back another movement in its argument.
    mov = objetoDe<CVarelta>(argumentos.at(0));
    return CBool(ext->Eval("isValid"));
  } catch (const std::exception& e) {
    // Every other error of the step, reading "isValid" included, is only
    // logged: the movement stands.
    registrarEnHost("ERROR en frmVarelta-posExt: " + descripcionDe(e));
    return true;
  }
}

}  // namespace caja
