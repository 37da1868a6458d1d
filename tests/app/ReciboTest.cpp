#include "app/papeles/Recibo.h"

#include <gtest/gtest.h>

#include "caja/base/Texto.h"
#include "tests/support/HostPrueba.h"

namespace caja::app {
namespace {

using test::cur;

// A float of 200 Bs. at till 2, session 3, of a shop whose name needs code
// page 850.
DatosRecibo fondo() {
  DatosRecibo d;
  d.empresa = "Bodega Ñandú";
  d.numero = 7;
  d.maquina = 2;
  d.sesion = 3;
  d.cajero = "ANA";
  d.tipo = "entrada";
  d.fecha = Fecha::fromYmd(2026, 11, 25);
  d.hora = Fecha::fromHms(9, 30, 0);
  d.pagos.push_back({"Efectivo", false, cur("200"), cur("200"), "EFE", "", "", ""});
  d.total = cur("200");
  d.conEfectivo = true;
  return d;
}

TEST(Recibo, EscPosBytesOfAFloatAreTheOnesWrittenByHand) {
  const std::string dashes(32, '-');
  const std::string esperado = std::string("\x1b@\x1bt\x02", 5) +  // init, CP850
                               std::string(
                                   "\x1b"
                                   "E\x01",
                                   3) +
                               "          Bodega \xa5"
                               "and\xa3\n" +  // bold title
                               std::string(
                                   "\x1b"
                                   "E\x00",
                                   3) +
                               std::string(
                                   "\x1b"
                                   "E\x01",
                                   3) +
                               "      ENTRADA DE EFECTIVO\n" +
                               std::string(
                                   "\x1b"
                                   "E\x00",
                                   3) +
                               "Movimiento 7\n"
                               "2026-11-25 09:30:00\n"
                               "Caja 2  Sesi\xa2n 3\n"
                               "Cajero: ANA\n" +
                               dashes + "\n" + "Efectivo                  200.00\n" + dashes +
                               "\n" + "Total ingresado           200.00\n" +
                               std::string("\x1bp\x00\x19\xfa", 5) +  // drawer pulse
                               std::string(
                                   "\x1b"
                                   "d\x04\x1dVB\x00",
                                   7);  // feed, cut
  EXPECT_EQ(escposRecibo(lineasRecibo(fondo(), 32), true), esperado);
  // A sale by card alone opens no drawer.
  const std::string sinCajon = escposRecibo(lineasRecibo(fondo(), 32), false);
  EXPECT_EQ(sinCajon.find("\x1bp"), std::string::npos);
}

// However long the names and amounts, no line passes the roll's width, and
// numbers are masked but their last four characters.
TEST(Recibo, NoLineOverflowsItsWidthAndNumbersAreMasked) {
  DatosRecibo d = fondo();
  d.empresa = "Inversiones y Distribuidora La Gran Ferretería del Centro de Maracaibo, C.A.";
  d.tipo = "devolucion";
  d.anulado = true;
  d.cajero = std::string(60, 'X');
  d.documento = "FAC 2147483647";
  d.pagos.push_back({"Transferencia internacional en dólares americanos", true,
                     cur("922337203685477.5807"), cur("-922337203685477.5807"), "ZEL",
                     "36.123456789", "01020304050607080910", "ñ9876"});
  d.vuelto.push_back({"Dólares", "USD", cur("-922337203685477.5807"), cur("1.0001")});
  d.vuelto.push_back({"", "CREDITO", cur("3.1"), cur("3.1")});
  d.igtf = cur("0.0011");
  for (const int ancho : {32, 42, 48}) {
    SCOPED_TRACE(ancho);
    const auto lineas = lineasRecibo(d, ancho);
    for (const auto& l : lineas)
      EXPECT_LE(largoUtf8(l.texto), static_cast<std::size_t>(ancho)) << l.texto;
    const std::string texto = textoRecibo(lineas);
    for (const char* parte : {"DEVOLUCIÓN", "*** ANULADO ***", "Cuenta ****************0910",
                              "Número *9876", "-922337203685477.5807", "0.0011", "1.0001",
                              "Acreditado al cliente", "3.10", "ZEL 922337203685477.5807 x"})
      EXPECT_NE(texto.find(parte), std::string::npos) << parte << "\n" << texto;
  }
  const struct {
    const char* numero;
    const char* enmascarado;
  } casos[] = {{"4111111111111111", "************1111"},
               {"1234", "1234"},
               {"", ""},
               {"añoñ5678", "****5678"}};
  for (const auto& [numero, enmascarado] : casos)
    EXPECT_EQ(enmascarar(numero), enmascarado) << numero;
  for (const int ancho : {0, 31, 40, 80})
    EXPECT_FALSE(anchoValido(ancho)) << ancho;
}

}  // namespace
}  // namespace caja::app
