#include "caja/dialogs/modelo/DetalleMedio.h"

#include "caja/base/Conversiones.h"
#include "caja/base/Texto.h"
#include "caja/service/General.h"
#include "caja/service/HostUtil.h"

namespace caja {

namespace {

constexpr int kNivelAutorizado = 5;

struct Limite {
  DetalleMedio::Campo campo;
  std::size_t minimo, maximo;
  const char* mensaje;
};

const Limite kLimites[] = {
    {DetalleMedio::Campo::ClaveAutorizacion, 4, 6,
     "La clave debe contener de cuatro a seis caracteres"},
    {DetalleMedio::Campo::Cuenta, 8, 20,
     "El numero de cuenta debe tener de ocho a veinte caracteres"},
    {DetalleMedio::Campo::IdTitular, 6, 15,
     "La identificacion debe tener de seis a quince caracteres"},
    {DetalleMedio::Campo::NumDoc, 6, 20,
     "El número del documento debe tener de seis a veinte caracteres"},
};

std::int32_t bandera(DetalleMedio::Campo campo) {
  switch (campo) {
    case DetalleMedio::Campo::Emisor:
      return ControlEmisor;
    case DetalleMedio::Campo::Cuenta:
      return ControlIDCuenta;
    case DetalleMedio::Campo::IdTitular:
      return ControlIDTitular;
    case DetalleMedio::Campo::NumDoc:
      return ControlNumero;
    case DetalleMedio::Campo::ClaveAutorizacion:
      return ControlClaveAutorizacion;
    case DetalleMedio::Campo::Denominaciones:
      return ControlDenominaciones;
    default:
      return 0;
  }
}

}  // namespace

bool DetalleMedio::preparar(std::shared_ptr<CDetalleIngreso> linea) {
  linea_ = std::move(linea);
  std::string codigo = linea_->medio;
  medio_ = ObtenerMedioPago(codigo);
  if (!medio_) {
    hostUtil().MostrarMensaje("ERROR: Medio de pago desconocido (" + linea_->medio + ")");
    return false;
  }
  emisor = linea_->CodigoEmisor;
  cuenta = linea_->NumeroCuenta;
  idTitular = linea_->IdTitular;
  numDoc = linea_->NumeroDocumento;
  claveAutorizacion = linea_->ClaveAutorizacion;
  if (!linea_->montoNominal.isZero())
    montoRecibido = linea_->montoNominal;
  for (const auto& d : *linea_->Denominaciones)
    filas.push_back({d->Denominacion, d->CantidadRecibida});
  if (abierto(Campo::Emisor)) {
    auto rs =
        factoria().openrecordset("SELECT codigoEmisor FROM GeneralEmisores WHERE tipoDocumento = " +
                                 factoria().StringDB(medio_->codigo) + " ORDER BY CodigoEmisor");
    for (; !rs->Eof(); rs->MoveNext())
      emisores.push_back(NzTexto(rs->Fields(0)));
  }
  factor_ = medio_->FactorCambio();
  return true;
}

bool DetalleMedio::abierto(Campo campo) const {
  return campo == Campo::Monto || (medio_->Atributos & bandera(campo)) != 0;
}

const char* DetalleMedio::ayudaCantidad() {
  return "Cantidad de unidades recibidas de la denominacion seleccionada";
}

const char* DetalleMedio::ayuda(Campo campo) {
  switch (campo) {
    case Campo::Emisor:
      return "Seleccione el codigo del ente emisor del valor";
    case Campo::Monto:
      return "Monto recibido";
    case Campo::ClaveAutorizacion:
      return "Clave de autorización del banco u operador de crédito";
    case Campo::Cuenta:
      return "Numero de la cuenta";
    case Campo::IdTitular:
      return "Documento de identidad del titular";
    case Campo::NumDoc:
      return "Numero del cheque, voucher o transacción";
    case Campo::Denominaciones:
      return "Denominación (valor unitario) de los valores recibidos";
  }
  return "";
}

std::string& DetalleMedio::texto(Campo campo) {
  switch (campo) {
    case Campo::Emisor:
      return emisor;
    case Campo::Cuenta:
      return cuenta;
    case Campo::IdTitular:
      return idTitular;
    case Campo::NumDoc:
      return numDoc;
    default:
      return claveAutorizacion;
  }
}

std::string DetalleMedio::validarCampo(Campo campo, std::string& texto) {
  texto = upperEspanol(trimBlanks(texto));
  for (const auto& l : kLimites) {
    if (l.campo != campo)
      continue;
    // An empty field may be left; acceptance names it if it is still empty.
    const std::size_t n = largoUtf8(texto);
    return n > 0 && (n < l.minimo || n > l.maximo) ? l.mensaje : "";
  }
  if (campo != Campo::Emisor)
    return "";
  if (texto.empty())
    return "Por favor, especifique el emisor";
  if (texto == emisorAutorizado_)
    return "";
  CDetalleIngreso consulta;
  consulta.medio = medio_->codigo;
  if (consulta.ExisteEmisor(texto))
    return "";
  // Registering a new issuer is an authorised act; the level is compared as
  // it comes, so that 4.9 is below 5.
  if (NzDouble(factoria().VerificarUsuario("Registrar nuevo emisor: " + texto)) < kNivelAutorizado)
    return "Emisor no autorizado: " + texto;
  emisorAutorizado_ = texto;
  return "";
}

std::string DetalleMedio::validarMonto() const {
  if (!montoRecibido)
    return "Por favor, introduzca un monto";
  if (*montoRecibido <= Currency{})
    return "Por favor, escriba un valor positivo";
  return "";
}

std::string DetalleMedio::ValidateCell(int columna, Currency valor) {
  if (valor > Currency{})
    return "";
  return columna == 0 ? "Por favor, introduzca un valor positivo"
                      : "Por favor, indique una cantidad positiva";
}

bool DetalleMedio::IsRowValid(const Fila& fila) {
  return fila.Denominacion > Currency{} && fila.CantidadRecibida > 0;
}

std::optional<DetalleMedio::Rechazo> DetalleMedio::aceptar() {
  // The checks a field makes on leaving, for a field the cashier never left.
  for (Campo c :
       {Campo::ClaveAutorizacion, Campo::Emisor, Campo::IdTitular, Campo::Cuenta, Campo::NumDoc}) {
    if (!abierto(c) || texto(c).empty())
      continue;
    if (const std::string m = validarCampo(c, texto(c)); !m.empty())
      return Rechazo{c, m};
  }
  if (abierto(Campo::Denominaciones)) {
    for (const auto& f : filas) {
      if (IsRowValid(f))
        continue;
      std::string m = ValidateCell(0, f.Denominacion);
      if (m.empty())
        m = ValidateCell(1, Currency::fromUnits(f.CantidadRecibida));
      return Rechazo{Campo::Denominaciones, m};
    }
  }
  const std::pair<Campo, const char*> vacios[] = {
      {Campo::ClaveAutorizacion, "Clave de autorizacion inválida"},
      {Campo::Emisor, "Codigo de emisor inválido"},
      {Campo::IdTitular, "Identificacion inválida"}};
  for (const auto& [campo, mensaje] : vacios)
    if (abierto(campo) && texto(campo).empty())
      return Rechazo{campo, mensaje};
  const Currency nominal = montoRecibido.value_or(Currency{});
  if (nominal <= Currency{})
    return Rechazo{Campo::Monto, "Monto inválido"};
  if (abierto(Campo::Cuenta) && cuenta.empty())
    return Rechazo{Campo::Cuenta, "Numero de cuenta inválido"};
  if (abierto(Campo::NumDoc) && numDoc.empty())
    return Rechazo{Campo::NumDoc, "Numero de documento inválido"};

  linea_->montoNominal = nominal;
  linea_->Monto = CCur(nominal.toDouble() * factor_);
  // Every field started with the line's value: one the method does not open
  // writes back what the line already had.
  linea_->CodigoEmisor = emisor;
  linea_->NumeroCuenta = cuenta;
  linea_->IdTitular = idTitular;
  linea_->NumeroDocumento = numDoc;
  linea_->ClaveAutorizacion = claveAutorizacion;
  if (abierto(Campo::Denominaciones)) {
    linea_->Denominaciones = std::make_shared<Collection<CDetalleDenominacion>>();
    for (const auto& f : filas) {
      auto d = std::make_shared<CDetalleDenominacion>();
      d->Denominacion = f.Denominacion;
      d->CantidadRecibida = f.CantidadRecibida;
      linea_->Denominaciones->Add(d);
    }
  }
  return std::nullopt;
}

}  // namespace caja
