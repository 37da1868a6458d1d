#include "caja/dialogs/modelo/DetalleMedio.h"

#include <gtest/gtest.h>

#include "caja/dialogs/modelo/CobroVarelta.h"
#include "tests/support/HostPrueba.h"

namespace caja {
namespace {

using test::cur;
using Campo = DetalleMedio::Campo;

class DetalleModelo : public ::testing::Test, protected test::ConSqlite {
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

// A level below 5 refuses a new issuer, however close to 5 it is.
TEST_F(DetalleModelo, ANewIssuerNeedsALevelOfFive) {
  for (const auto& [nivel, mensaje] :
       {std::pair{Variant(4.9), "Emisor no autorizado: BOD"}, std::pair{Variant(5), ""}}) {
    SCOPED_TRACE(mensaje);
    db->SetVerificador([nivel = nivel](const std::string&) { return nivel; });
    DetalleMedio d = preparado();
    std::string emisor = "bod";
    EXPECT_EQ(d.validarCampo(Campo::Emisor, emisor), mensaje);
  }
}

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

// Fields the method does not open keep what the line brought.
TEST_F(DetalleModelo, AcceptanceKeepsTheFieldsTheMethodDoesNotOpen) {
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
}

TEST_F(DetalleModelo, FieldsAreTrimmedAndUpperCasedWithTheirBounds) {
  DetalleMedio d = preparado();
  std::string t = "  v-12345ñ ";
  EXPECT_EQ(d.validarCampo(Campo::IdTitular, t), "");
  EXPECT_EQ(t, "V-12345Ñ");
  t = "12345";
  EXPECT_EQ(d.validarCampo(Campo::NumDoc, t),
            "El número del documento debe tener de seis a veinte caracteres");
  t = "";
  EXPECT_EQ(d.validarCampo(Campo::Emisor, t), "Por favor, especifique el emisor");
  EXPECT_EQ(DetalleMedio::ValidateCell(1, cur("0")), "Por favor, indique una cantidad positiva");
}

TEST_F(DetalleModelo, ParticularsReachTheMovementLine) {
  CobroVarelta c(cur("100"), cur("0"), cur("0"), 1.0, 0.0, OpcionesCobro{});
  DescriptorMedio m;
  m.Codigo = "TOD";
  c.medios.push_back(m);
  c.medios[0].valor = cur("60");
  auto p = c.particulares(std::size_t{0});
  EXPECT_EQ(p->montoNominal, cur("60"));
  p->NumeroDocumento = "778899";
  p->montoNominal = cur("100");
  c.tomarParticulares(std::size_t{0});
  EXPECT_EQ(c.medios[0].valor, cur("100"));
  Vuelto v;
  c.recalcular();
  auto mov = c.LlenarVarelta(v);
  ASSERT_NE(mov, nullptr);
  EXPECT_EQ(mov->colDetalles->Item(1)->NumeroDocumento, "778899");
}

}  // namespace
}  // namespace caja
