#include "caja/movement/CDetalleIngreso.h"

#include <vector>

#include "caja/base/Conversiones.h"
#include "caja/base/Formato.h"
#include "caja/base/Texto.h"
#include "caja/catalog/CMedioPago.h"
#include "caja/service/General.h"
#include "caja/service/HostUtil.h"

namespace caja {

namespace {

constexpr const char* kCrLf = "\r\n";
constexpr const char* kFuenteDeserialize = "CDetalleVarelta::Deserialize";
constexpr long kSubindiceFueraDeIntervalo = 9;

std::vector<std::string> partirEnLineas(const std::string& s) {
  std::vector<std::string> lineas;
  std::size_t desde = 0;
  for (auto pos = s.find(kCrLf); pos != std::string::npos; pos = s.find(kCrLf, desde)) {
    lineas.push_back(s.substr(desde, pos - desde));
    desde = pos + 2;
  }
  lineas.push_back(s.substr(desde));
  return lineas;
}

// Lines by index, raising the host language's error 9 past the end.
class Lineas {
 public:
  explicit Lineas(std::vector<std::string> lineas) : lineas_(std::move(lineas)) {}
  const std::string& operator[](long i) const {
    if (i < 0 || i >= static_cast<long>(lineas_.size()))
      throw CajaError(kSubindiceFueraDeIntervalo, "caja", "El subíndice está fuera del intervalo");
    return lineas_[static_cast<std::size_t>(i)];
  }
  long ultimo() const { return static_cast<long>(lineas_.size()) - 1; }

 private:
  std::vector<std::string> lineas_;
};

// Exact: an amount of the text form never passes through a double.
Currency montoDeLinea(const std::string& linea) {
  return ValExacto(linea).toCurrency();
}

CajaError estructuraInvalida() {
  return CajaError(err::kErrorComponente, kFuenteDeserialize, "Estructura invalida");
}

// The 16-bit line counter of the denominations block: overflow is error 6.
std::int16_t siguienteLinea(std::int16_t i) {
  std::int16_t r;
  if (__builtin_add_overflow(i, std::int16_t{1}, &r))
    throw errorEjecucion(err::kDesbordamiento);
  return r;
}

// Denominations are a settable reference; Nothing there is error 91.
void agregarDenominacion(CDetalleIngreso& linea, std::shared_ptr<CDetalleDenominacion> d) {
  if (!linea.Denominaciones)
    throw errorEjecucion(err::kObjetoNoEstablecido);
  linea.Denominaciones->Add(std::move(d));
}

}  // namespace

std::string CDetalleIngreso::Serialize() const {
  std::string s;
  auto linea = [&s](const std::string& texto) { s += texto + kCrLf; };
  linea("<DIC>");
  linea(medio);
  linea(CStr(Variant(Monto)));
  linea(IdTitular);
  linea(NumeroCuenta);
  linea(NumeroDocumento);
  linea(ClaveAutorizacion);
  linea(CodigoEmisor);
  linea(CStr(Variant(montoNominal)));
  linea("<DEC>");
  if (DetalleConfirmacion) {
    linea(replaceAll(DetalleConfirmacion->TextoComprobante, kCrLf, "\t"));
    linea(DetalleConfirmacion->Id);
    linea(DetalleConfirmacion->TipoMedio);
    linea(DetalleConfirmacion->CodigoEmisor);
    linea("");  // Track1 is never written out
    linea("");  // nor Track2
    linea(CStr(Variant(DetalleConfirmacion->Monto)));
  } else {
    for (int i = 0; i < 7; ++i)
      linea("");
  }
  linea("<DEC/>");
  if (Denominaciones && Denominaciones->Count() > 0) {
    linea("<DEN>");
    for (const auto& d : *Denominaciones) {
      linea(CStr(Variant(d->Denominacion)));
      linea(CStr(Variant(d->CantidadRecibida)));
    }
    linea("<DEN/>");
  }
  linea("<DIC/>");
  return s;
}

void CDetalleIngreso::Deserialize(const std::string& s) {
  const Lineas l(partirEnLineas(s));
  if (l[0] != "<DIC>")
    throw estructuraInvalida();
  try {
    medio = l[1];
    Monto = montoDeLinea(l[2]);
    IdTitular = l[3];
    NumeroCuenta = l[4];
    NumeroDocumento = l[5];
    ClaveAutorizacion = l[6];
    CodigoEmisor = l[7];
    montoNominal = montoDeLinea(l[8]);
    if (!l[10].empty()) {
      DetalleConfirmacion = std::make_shared<CDetalleConfirmacion>();
      DetalleConfirmacion->TextoComprobante = replaceAll(l[10], "\t", kCrLf);
      DetalleConfirmacion->Id = l[11];
      DetalleConfirmacion->TipoMedio = l[12];
      DetalleConfirmacion->CodigoEmisor = l[13];
      DetalleConfirmacion->Track1 = l[14];
      DetalleConfirmacion->Track2 = l[15];
      DetalleConfirmacion->Monto = montoDeLinea(l[16]);
      DetalleConfirmacion->Referencia = NumeroDocumento;
    } else {
      DetalleConfirmacion = nullptr;
    }
    if (l[18] == "<DIC/>" || l.ultimo() == 18)
      return;
    // Line 18 is taken to be "<DEN>" without a check.
    std::int16_t i = 19;
    while (l[i] != "<DEN/>") {
      auto d = std::make_shared<CDetalleDenominacion>();
      d->Denominacion = montoDeLinea(l[i]);
      i = siguienteLinea(i);
      d->CantidadRecibida = CInt(Val(l[i]));
      i = siguienteLinea(i);
      agregarDenominacion(*this, d);
    }
    i = siguienteLinea(i);
    // A bad closing line is raised and swallowed below: the denominations read stay.
    if (l[i] != "<DIC/>")
      throw estructuraInvalida();
  } catch (const CajaError&) {
    // A damaged text keeps what was read and ends quietly: hosts reading
    // kept lines (DetallesEnRegistro) get every line, damaged or not.
  }
}

bool CDetalleIngreso::EvalVar(const Variant& sVarID, Variant& vRetBuffer,
                              Variant& sRetBuffer) const {
  // It never fails: a name that is no text (Null, an object) is simply unknown.
  std::string nombre;
  try {
    nombre = upperAscii(CStr(sVarID));
  } catch (const CajaError&) {
    return false;
  }
  auto texto = [&](const std::string& valor) {
    vRetBuffer = Variant(valor);
    sRetBuffer = Variant(valor);
    return true;
  };
  auto numero = [&](const Variant& valor) {
    vRetBuffer = valor;
    sRetBuffer = Variant(Format(valor, kFormatoMonto));
    return true;
  };
  if (nombre == "MEDIO")
    return texto(medio);
  if (nombre == "MONTO")
    return numero(Variant(Monto));
  if (nombre == "TITULAR" || nombre == "IDTITULAR")
    return texto(IdTitular);
  if (nombre == "NUMEROCUENTA" || nombre == "CUENTA")
    return texto(NumeroCuenta);
  if (nombre == "NUMERODOCUMENTO" || nombre == "DOCUMENTO" || nombre == "REFERENCIA")
    return texto(NumeroDocumento);
  if (nombre == "CLAVEAUTORIZACION" || nombre == "CLAVE" || nombre == "CLAVECONFORMACION")
    return texto(ClaveAutorizacion);
  if (nombre == "EMISOR" || nombre == "CODIGOEMISOR")
    return texto(CodigoEmisor);
  if (nombre == "MONTONOMINAL")
    return numero(Variant(montoNominal));
  if (nombre == "TIPOCAMBIO") {
    // A failed division (no nominal amount) gives the integer 1.
    return numero(montoNominal.isZero() ? Variant(std::int16_t{1}) : Variant(Monto / montoNominal));
  }
  return false;
}

std::string CDetalleIngreso::ToString() const {
  const std::string monto = Format(Variant(Monto), kFormatoMoneda);
  if (medio == "EFE")
    return "EFECTIVO " + monto;
  CMedioPago m;
  if (!m.load(medio))
    return "MEDIO INVALIDO (" + medio + ") " + monto;
  if (!(m.Atributos & monedaExtranjera))
    return medio + " " + monto;
  if (montoNominal.isZero())
    throw errorEjecucion(err::kDivisionPorCero);
  // No blank between the amount and the code: the line reads as designed.
  return Format(Variant(montoNominal), kFormatoMonto) + medio + " x " +
         Format(Variant(Monto / montoNominal), kFormatoMoneda);
}

void CDetalleIngreso::loadInstance(Recordset& rs, CDetalleIngreso* pDest) {
  CDetalleIngreso& d = pDest ? *pDest : *this;
  d.Id = NzLong(rs.Fields("Id"));
  d.TransID = NzLong(rs.Fields("TransID"));
  d.medio = NzTexto(rs.Fields("medio"));
  d.Monto = NzMoneda(rs.Fields("Monto"));
  d.IdTitular = NzTexto(rs.Fields("IdTitular"));
  d.NumeroCuenta = NzTexto(rs.Fields("NumeroCuenta"));
  d.NumeroDocumento = NzTexto(rs.Fields("NumeroDocumento"));
  d.ClaveAutorizacion = NzTexto(rs.Fields("ClaveAutorizacion"));
  d.CodigoEmisor = NzTexto(rs.Fields("Emisor"));
  d.montoNominal = NzMoneda(rs.Fields("montoNominal"));
  // Ordered by the filter column itself: the rows come as the database gives them, by design.
  auto den = factoria().openrecordset("SELECT * FROM DetallesDenominacion WHERE idDetalle = " +
                                      factoria().NumeroDB(Variant(d.Id)) + " ORDER BY idDetalle");
  for (; !den->Eof(); den->MoveNext()) {
    auto x = std::make_shared<CDetalleDenominacion>();
    x->Id = CLng(den->Fields(0));
    x->idDetalle = CLng(den->Fields(1));
    x->Denominacion = CCur(den->Fields(2));
    x->CantidadRecibida = CInt(den->Fields(3));
    agregarDenominacion(d, x);
  }
}

bool CDetalleIngreso::ExisteEmisor(const std::string& istrEmisor) const {
  const Variant q1 = factoria().ReadScalar(
      "SELECT count(*) FROM generalEmisores WHERE TipoDocumento = ? AND codigoEmisor = ?",
      {medio, istrEmisor});
  if (CLng(q1) != 0)
    return true;
  const Variant q2 = factoria().ReadScalar(
      "SELECT Count(*) As Q FROM DetallesVarelta WHERE Medio = ? AND Emisor = ?",
      {medio, istrEmisor});
  return CLng(q2) != 0;
}

}  // namespace caja
