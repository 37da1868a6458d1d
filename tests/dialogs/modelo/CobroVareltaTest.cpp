#include "caja/dialogs/modelo/CobroVarelta.h"

#include <gtest/gtest.h>

#include "caja/dialogs/modelo/DetalleMedio.h"
#include "caja/dialogs/modelo/DivisionVuelto.h"
#include "tests/support/HostPrueba.h"

namespace caja {
namespace {

using Campo = DetalleMedio::Campo;
using test::cur;
using test::descriptor;

class Cobro : public ::testing::Test, protected test::ConFake {
 protected:
  CobroVarelta nuevo(const char* neto, double tasa = 1.0, double igtf = 0.0,
                     OpcionesCobro o = OpcionesCobro{}) {
    return CobroVarelta(cur(neto), cur("0"), cur("0"), tasa, igtf, o);
  }
};

TEST_F(Cobro, InputsFromTheCatalogueWithTheirTagAndFactor) {
  const std::vector<std::string> columnas = {
      "codigo",     "Clase",     "Titulo",        "isMedioElectronico",
      "TextoAyuda", "Atributos", "PorcentajeISLR"};
  auto fila = [](const char* c, int clase, int atributos, double islr) {
    return test::valores(c, clase, c, 0, "", atributos, islr);
  };
  std::vector<TablaRecordset::Fila> filas = {
      fila("USD", 8, 64 | 1024, 36.0), fila("IDX", 7, 64 | 512, 2.0),
      fila("EUR", 7, 64 | 1024, 35.0), fila("TDC", 3, 1024, 9.0), fila("CHE", 1, 8, 5.0)};
  for (int i = 0; i < 11; ++i)
    filas.push_back(fila("OTR", 7, 0, 0.0));
  TablaRecordset rs({columnas.begin(), columnas.end()}, filas);
  CobroVarelta c = nuevo("100", 40.0);
  c.agregarMedios(rs);
  ASSERT_EQ(c.medios.size(), 15u);  // the sixteenth row is never shown
  const struct {
    const char* tag;
    double factor;
  } esperados[] = {{"USD**", 40.0}, {"ME", 80.0}, {"ME*", 35.0}, {"*", 1.0}, {"", 1.0}};
  for (std::size_t i = 0; i < std::size(esperados); ++i) {
    SCOPED_TRACE(c.medios[i].Codigo);
    EXPECT_EQ(c.medios[i].Tag, esperados[i].tag);
    EXPECT_EQ(c.medios[i].Factor, esperados[i].factor);
  }
}

// The change and its labels, national, foreign at the rate, and mixed.
TEST_F(Cobro, ChangeLabelsFollowTheChangeStepAndTheRate) {
  const struct {
    const char* paso;
    double tasa;
    const char* efectivo;
    const char *vuelto, *usd, *mixto;
  } casos[] = {
      {"0.01", 1.0, "116", "Bs. 0.00", "", ""},
      {"0.50", 1.0, "128.26", "Bs. 12.50", "", ""},
      {"0.01", 36.0, "196", "Bs. 80.00", "$ 2.22", "$ 2.00 + Bs. 8.00"},
      {"0.01", 36.0, "36", "-Bs. 80.00", "$ -2.22", "$ -2.00 + -Bs. 8.00"},
  };
  for (const auto& k : casos) {
    SCOPED_TRACE(std::string(k.efectivo) + " at " + std::to_string(k.tasa));
    entorno.settings->SaveSetting("ZOR", "frmVarelta", "RedondeoVuelto", k.paso);
    CobroVarelta c(cur("100"), cur("16"), cur("0"), k.tasa, 0.0, OpcionesCobro{});
    c.efectivo = cur(k.efectivo);
    const Pantalla p = c.recalcular();
    EXPECT_EQ(p.lblTotal, "116.00");
    EXPECT_EQ(p.lblVuelto, k.vuelto);
    if (*k.usd) {
      EXPECT_EQ(p.lblVueltoUSD, k.usd);
      EXPECT_EQ(p.lblVueltoMixto, k.mixto);
    }
  }
  entorno.settings->SaveSetting("ZOR", "frmVarelta", "RedondeoVuelto", "0");
  CobroVarelta c = nuevo("100");
  c.efectivo = cur("112.2637");
  EXPECT_EQ(c.recalcular().vuelto, cur("12.2637"));
}

TEST_F(Cobro, ForeignRoundingSnapsUpToHalfAForeignCent) {
  const struct {
    const char* efectivo;
    const char* dolares;
    const char* recibido;
  } casos[] = {
      {"0", "2.775", "100"},        // 99.90: 0.10 ≤ 0.18, snapped
      {"0.8", "2.75", "99.8"},      // 0.20 > 0.18
      {"0.996", "2.75", "99.996"},  // 0.004
      {"0.995", "2.75", "99.995"},  // exactly 0.005 is not snapped either
  };
  for (const auto& k : casos) {
    SCOPED_TRACE(k.recibido);
    CobroVarelta c = nuevo("100", 36.0);
    c.medios.push_back(descriptor("USD", 36.0, "USD"));
    c.efectivo = cur(k.efectivo);
    c.medios[0].valor = cur(k.dolares);
    EXPECT_EQ(c.TotalRecibido(), cur(k.recibido));
  }
  CobroVarelta local = nuevo("100", 36.0);
  local.efectivo = cur("99.99");
  EXPECT_EQ(local.TotalRecibido(), cur("99.99"));
}

// IGTF on the methods subject to it, half up to cents, capped at what the
// opening amount bears; with ExcluirIVAIGTF the tax share bears none.
TEST_F(Cobro, IgtfRoundsHalfUpAndIsCappedAtTheOpeningAmount) {
  const struct {
    const char* iva;
    double tasa;
    bool sinIVA;
    const char *pago, *igtf;
  } casos[] = {
      {"0", 3.0, false, "200", "3"},
      {"0", 3.0, false, "50", "1.5"},
      {"16", 3.0, true, "116", "3"},   // 3.48 × 100 ÷ 116
      {"0", 2.5, false, "5", "0.13"},  // 0.125
  };
  for (const auto& k : casos) {
    SCOPED_TRACE(k.pago);
    OpcionesCobro o;
    o.ExcluirIVAIGTF = k.sinIVA;
    CobroVarelta c(cur("100"), cur(k.iva), cur("0"), 1.0, k.tasa, o);
    c.medios.push_back(descriptor("TDC", 1.0, "*"));
    c.medios[0].valor = cur(k.pago);
    EXPECT_EQ(c.valorIGTF(), cur(k.igtf));
  }
}

TEST_F(Cobro, SpaceFillIncludesTheIgtfOfThePaymentOnce) {
  CobroVarelta c = nuevo("100", 40.0, 3.0);
  c.medios.push_back(descriptor("USD", 40.0, "USD**", ClaseIngresoSesion::EfectivoME));
  c.efectivo = cur("20");
  c.completar(std::size_t{0});
  EXPECT_EQ(c.medios[0].valor, cur("2.06"));  // (80 + 2.40) ÷ 40

  c.completar(std::nullopt);
  EXPECT_EQ(c.efectivo, cur("20.072"));  // 100 + IGTF 2.472 (not yet in cents) − 82.40
  c.efectivo = cur("150");
  c.completar(std::size_t{0});
  EXPECT_EQ(c.medios[0].valor, cur("0"));  // nothing missing: the input stays at 0
}

// The excess questions allow one unit of foreign currency.
TEST_F(Cobro, PlausibilityQuestionsOfAnInput) {
  CobroVarelta c = nuevo("100", 20000.0);
  c.medios.push_back(descriptor("USD", 20000.0, "USD"));
  c.efectivo = cur("10100");
  EXPECT_EQ(c.preguntaExceso(std::nullopt), "");
  c.efectivo = cur("10100.01");
  EXPECT_EQ(c.preguntaExceso(std::nullopt), "El monto parece excesivo.\r\nEs correcto?");
  c.medios[0].valor = cur("1");  // one note never counts as excessive
  EXPECT_EQ(c.preguntaExceso(std::size_t{0}), "");
  c.medios[0].valor = cur("2");
  EXPECT_EQ(c.preguntaExceso(std::size_t{0}), "Está seguro\r(el monto parece excesivo)");
}

TEST_F(Cobro, AutoFillByLegacyName) {
  OpcionesCobro o;
  o.AutoFill = true;
  o.controlAutofill = "TXCHEQUES";
  CobroVarelta c = CobroVarelta(cur("100"), cur("0"), cur("0"), 1.0, 0.0, o);
  c.medios.push_back(descriptor("TDC", 1.0, "", ClaseIngresoSesion::TTCVisa));
  c.medios.push_back(descriptor("CHE", 1.0, "", ClaseIngresoSesion::Cheques));
  c.autoLlenar();
  EXPECT_EQ(c.medios[1].valor, cur("100"));
  c.medios[1].valor = cur("0");
  c.opciones.controlAutofill = "txefectivo";  // cash needs the exact name
  c.autoLlenar();
  EXPECT_EQ(c.efectivo, cur("0"));
}

class Llenar : public Cobro {
 protected:
  std::shared_ptr<CVarelta> llenar(CobroVarelta& c) {
    Vuelto v;
    c.recalcular();
    return c.LlenarVarelta(v);
  }
};

// The movement's lines ("medio monto" in order) and totals: within the
// tolerance the foreign or last line absorbs the difference; change comes off
// the cash line or becomes a negative cash line; a negative total is a credit.
TEST_F(Llenar, LinesAndTotalsOfTheMovement) {
  const struct {
    const char *neto, *credito;
    double tasa, igtf;
    const char* efectivo;
    DescriptorMedio medio;
    const char *pago, *lineas, *debitos, *creditos, *vuelto, *montoIGTF;
  } casos[] = {
      {"100", "0", 1.0, 0, "0", descriptor("IDX", 2.5, "ME"), "39.998",  // 99.995
       "IDX 100", "100", "0", "0", "0"},
      {"100", "0", 40.0, 0, "3.85", descriptor("USD", 40.0, "USD"), "2.4", "EFE 3.85|USD 96.15",
       "100", "0", "0", "0"},
      {"105", "0", 1.0, 0, "20", descriptor("TDC", 1.0, ""), "90", "EFE 15|TDC 90", "105", "0", "5",
       "0"},
      {"100", "0", 1.0, 0, "0", descriptor("TDC", 1.0, ""), "110", "TDC 110|EFE -10", "100", "0",
       "10", "0"},
      {"0", "50", 1.0, 0, "-50", descriptor("TDC", 1.0, ""), "0", "EFE -50", "0", "50", "0", "0"},
      {"100", "0", 1.0, 3.0, "0", descriptor("TDC", 1.0, "*"), "103", "TDC 103", "103", "0", "0",
       "3"},
  };
  for (const auto& k : casos) {
    SCOPED_TRACE(k.lineas);
    CobroVarelta c(cur(k.neto), cur("0"), cur(k.credito), k.tasa, k.igtf, OpcionesCobro{});
    c.medios.push_back(k.medio);
    c.efectivo = cur(k.efectivo);
    c.medios[0].valor = cur(k.pago);
    auto mov = llenar(c);
    ASSERT_NE(mov, nullptr);
    std::string lineas;
    for (const auto& d : *mov->colDetalles)
      lineas += (lineas.empty() ? "" : "|") + d->medio + " " + d->Monto.toMachineText();
    EXPECT_EQ(lineas, k.lineas);
    EXPECT_EQ(mov->Debitos, cur(k.debitos));
    EXPECT_EQ(mov->Creditos, cur(k.creditos));
    EXPECT_EQ(mov->Vuelto, cur(k.vuelto));
    EXPECT_EQ(mov->montoIGTF, cur(k.montoIGTF));
    c.resultado = mov;  // a second acceptance returns the movement already made
    Vuelto v;
    EXPECT_EQ(c.LlenarVarelta(v), mov);
  }
  CobroVarelta corto = nuevo("100");
  corto.efectivo = cur("99.98");
  EXPECT_EQ(llenar(corto), nullptr);
  EXPECT_EQ(entorno.util->mensajes,
            std::vector<std::string>{"Le faltan Bs. 0.02 para completar el monto"});
}

// The host's "ValidarVarelta" may replace or refuse the movement; its errors
// are logged and shown; without the extension object it is only logged.
TEST_F(Llenar, HostValidation) {
  auto ext = std::make_shared<test::PosExtGrabadora>();
  fake->objetos["posExt"] = [&] { return ext; };
  CobroVarelta c = nuevo("10");
  c.efectivo = cur("10");
  ASSERT_NE(llenar(c), nullptr);  // no "ValidarVarelta": accepted
  EXPECT_TRUE(ext->llamadas.empty());

  fake->objetos["proc:ValidarVarelta"] = [] { return nullptr; };
  auto otro = std::make_shared<CVarelta>();
  ext->alCorrer = [&](std::vector<Variant>& args) { args[0] = Variant(otro); };
  EXPECT_EQ(llenar(c), otro);
  ext->esValido = Variant(false);
  EXPECT_EQ(llenar(c), nullptr);

  ext->fallar = true;
  EXPECT_EQ(llenar(c), nullptr);
  EXPECT_EQ(fake->logs, std::vector<std::string>{"ERROR: no existe en ValidarVarelta"});
  EXPECT_EQ(entorno.util->mensajes.back(), "ERROR: no existe en ValidarVarelta");

  // Reading "isValid" is not the procedure: its error is only logged and
  // the movement stands.
  ext->fallar = false;
  ext->esValido = Variant("quizá");
  const auto mensajes = entorno.util->mensajes.size();
  EXPECT_EQ(llenar(c), otro);
  EXPECT_EQ(fake->logs.back(), "ERROR en frmVarelta-posExt: No coinciden los tipos");
  EXPECT_EQ(entorno.util->mensajes.size(), mensajes);

  fake->objetos.erase("posExt");
  c.resultado = nullptr;
  EXPECT_NE(llenar(c), nullptr);
  ASSERT_EQ(fake->logs.size(), 3u);
  EXPECT_EQ(fake->logs[2].rfind("ERROR en frmVarelta-posExt: ", 0), 0u);
}

class DetalleModelo : public ::testing::Test, protected test::ConBase {
 protected:
  void SetUp() override {
    // Every flag but the denominations.
    db->ExecuteSQL(
        "INSERT INTO MediosPago (Codigo, Clase, Atributos, titulo, posicion) VALUES "
        "('TOD', 1, 62, 'Todo', 1), ('VAL', 7, 0, 'Vale', 2)");
  }
  DetalleMedio preparado() {
    linea = std::make_shared<CDetalleIngreso>();
    linea->medio = "TOD";
    DetalleMedio d;
    EXPECT_TRUE(d.preparar(linea));
    return d;
  }
  std::shared_ptr<CDetalleIngreso> linea;
};

TEST_F(DetalleModelo, AcceptanceChecksInTheirOrder) {
  DetalleMedio d = preparado();
  const std::vector<std::pair<std::function<void(DetalleMedio&)>, const char*>> pasos = {
      {[](DetalleMedio&) {}, "Clave de autorizacion inválida"},
      {[](DetalleMedio& m) { m.claveAutorizacion = "ABCD"; }, "Codigo de emisor inválido"},
      {[](DetalleMedio& m) { m.emisor = "X"; }, "Identificacion inválida"},
      {[](DetalleMedio& m) { m.idTitular = "V123456"; }, "Monto inválido"},
      {[](DetalleMedio& m) { m.montoRecibido = cur("5"); }, "Numero de cuenta inválido"},
      {[](DetalleMedio& m) { m.cuenta = "01020304"; }, "Numero de documento inválido"},
  };
  db->ExecuteSQL("INSERT INTO generalEmisores (TipoDocumento, CodigoEmisor) VALUES ('TOD', 'X')");
  for (const auto& [cambio, mensaje] : pasos) {
    cambio(d);
    const auto r = d.aceptar();
    ASSERT_TRUE(r.has_value()) << mensaje;
    EXPECT_EQ(r->mensaje, mensaje);
  }
  EXPECT_TRUE(linea->ClaveAutorizacion.empty());
  d.numDoc = "123456";
  EXPECT_FALSE(d.aceptar().has_value());
  EXPECT_EQ(linea->ClaveAutorizacion, "ABCD");
  EXPECT_EQ(linea->Monto, cur("5"));
}

// Fields the method does not open keep what the line brought; the others
// have their bounds.
TEST_F(DetalleModelo, AcceptanceKeepsTheFieldsTheMethodDoesNotOpenAndBounds) {
  linea = std::make_shared<CDetalleIngreso>();
  linea->medio = "VAL";
  linea->montoNominal = cur("5");
  linea->CodigoEmisor = "BANESCO";
  linea->NumeroCuenta = "01020304";
  linea->ClaveAutorizacion = "ABCD";
  DetalleMedio d;
  ASSERT_TRUE(d.preparar(linea));
  EXPECT_FALSE(d.aceptar().has_value());
  EXPECT_EQ(linea->CodigoEmisor, "BANESCO");
  EXPECT_EQ(linea->NumeroCuenta, "01020304");
  EXPECT_EQ(linea->ClaveAutorizacion, "ABCD");
  d = preparado();
  std::string t = "12345";
  EXPECT_EQ(d.validarCampo(Campo::NumDoc, t),
            "El número del documento debe tener de seis a veinte caracteres");
  t = "";
  EXPECT_EQ(d.validarCampo(Campo::Emisor, t), "Por favor, especifique el emisor");
  EXPECT_EQ(DetalleMedio::ValidateCell(1, cur("0")), "Por favor, indique una cantidad positiva");
}

// The change of test::cobroConVuelto() split: whole dollars at the drawer's
// rate, the rest in bolívares rounded to the change step; a step of 0.50
// leaves 0.10 unsplit, within half a step.
TEST_F(Cobro, DivisionSuggestsWholeForeignNotesAndTheRestRounded) {
  const CobroVarelta cobro = test::cobroConVuelto();
  const auto division = [&cobro] { return DivisionVuelto(cobro, cur("81.1"), false); };
  struct Caso {
    const char* paso;
    const char* efectivo;
    const char* restante;
  };
  for (const Caso& c : {Caso{"0.01", "8.1", "0"}, Caso{"0.5", "8", "0.1"}}) {
    SCOPED_TRACE(c.paso);
    entorno.settings->SaveSetting(kAppZOR, kSeccionVarelta, "RedondeoVuelto", c.paso);
    auto d = division();
    d.sugerir();
    EXPECT_EQ(d.entradas[1].nominal, cur("2"));
    EXPECT_EQ(d.entradas[0].nominal, cur(c.efectivo));
    EXPECT_EQ(d.restante(), cur(c.restante));
    EXPECT_FALSE(d.validar());
  }
  const auto d = division();  // national cash, then the cash-like methods
  EXPECT_EQ(d.entradas.size(), 3u);
  EXPECT_EQ(d.indiceDe("eur"), 2u);
  EXPECT_FALSE(d.indiceDe("TDC"));
}

TEST_F(Cobro, DivisionValidationNamesTheFieldAtFault) {
  const CobroVarelta cobro = test::cobroConVuelto();
  struct Caso {
    const char* efectivo;
    const char* dolares;
    const char* mensaje;
    std::optional<std::size_t> campo;
  };
  const Caso casos[] = {
      {"-1", "2", "El vuelto en Efectivo no puede ser negativo", 0},
      {"44.6", "1.005", "El vuelto en USD admite solo dos decimales", 1},
      {"0", "2.22", "Falta repartir Bs. 0.07 del vuelto", std::nullopt},
  };
  for (const Caso& c : casos) {
    SCOPED_TRACE(c.mensaje);
    DivisionVuelto d(cobro, cur("81.1"), false);
    d.entradas[0].nominal = cur(c.efectivo);
    d.entradas[1].nominal = cur(c.dolares);
    const auto rechazo = d.validar();
    ASSERT_TRUE(rechazo);
    EXPECT_EQ(rechazo->mensaje, c.mensaje);
    EXPECT_EQ(rechazo->campo, c.campo);
  }
}

}  // namespace
}  // namespace caja
