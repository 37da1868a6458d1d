#include "app/acciones/Empresa.h"

#include <charconv>
#include <optional>

#include "app/datos/Auditoria.h"
#include "app/controles/Autorizacion.h"
#include "app/linea/Salida.h"
#include "caja/base/Conversiones.h"
#include "caja/service/HostUtil.h"

namespace caja::app {

namespace {

// A percentage as typed: digits with '.' for decimals, from 0 to 100.
double porcentajeDe(const std::string& texto) {
  double p = -1;
  const auto [fin, ec] =
      std::from_chars(texto.data(), texto.data() + texto.size(), p, std::chars_format::fixed);
  if (texto.empty() || texto.find_first_not_of("0123456789.") != std::string::npos ||
      ec != std::errc() || fin != texto.data() + texto.size() || p < 0 || p > 100)
    throw ErrorUso("--igtf no válido: " + texto + " (un porcentaje de 0 a 100, con punto decimal)");
  return p;
}

std::string siNo(bool b) {
  return b ? "sí" : "no";
}

// The data as the options leave it, and what changed, for the trail.
struct Cambio {
  DatosEmpresa nueva;
  std::string detalle;
};

Cambio cambioDe(Contexto& c, const DatosEmpresa& actual) {
  if (c.args.bandera("especial") && c.args.bandera("no-especial"))
    throw ErrorUso("Indique uno: --especial o --no-especial");
  Cambio k{actual, ""};
  const auto anotarTexto = [&](const char* opcion, std::string& campo) {
    if (const auto v = c.args.valor(opcion); v && *v != campo) {
      k.detalle +=
          (k.detalle.empty() ? "" : "; ") + std::string(opcion) + ": " + campo + " -> " + *v;
      campo = *v;
    }
  };
  anotarTexto("nombre", k.nueva.nombre);
  anotarTexto("rif", k.nueva.rif);
  anotarTexto("direccion", k.nueva.direccion);
  if (c.args.bandera("especial") || c.args.bandera("no-especial")) {
    const bool especial = c.args.bandera("especial");
    if (especial != k.nueva.especial)
      k.detalle += (k.detalle.empty() ? "" : "; ") + std::string("especial: ") +
                   siNo(k.nueva.especial) + " -> " + siNo(especial);
    k.nueva.especial = especial;
  }
  if (const auto igtf = c.args.valor("igtf")) {
    const double p = porcentajeDe(*igtf);
    if (p != k.nueva.igtf)
      k.detalle += (k.detalle.empty() ? "" : "; ") + std::string("igtf: ") +
                   textoDeTasa(k.nueva.igtf) + " -> " + textoDeTasa(p);
    k.nueva.igtf = p;
    // Only a special taxpayer charges IGTF: a shop that sets a percentage
    // means to charge it, unless it says --no-especial.
    if (p > 0 && !k.nueva.especial && !c.args.bandera("no-especial")) {
      k.detalle += "; especial: no -> sí";
      k.nueva.especial = true;
    }
  }
  return k;
}

void guardar(HostSql& db, const DatosEmpresa& e) {
  db.ExecuteSQL(
      "INSERT INTO hostEmpresa (id, Nombre, Rif, Direccion, ContribuyenteEspecial, "
      "porcentajeIGTF456) VALUES (1, ?, ?, ?, ?, ?) ON CONFLICT (id) DO UPDATE SET "
      "Nombre = excluded.Nombre, Rif = excluded.Rif, Direccion = excluded.Direccion, "
      "ContribuyenteEspecial = excluded.ContribuyenteEspecial, "
      "porcentajeIGTF456 = excluded.porcentajeIGTF456",
      {e.nombre, e.rif, e.direccion, Variant(e.especial), e.igtf});
}

bool algunaOpcion(Contexto& c) {
  for (const char* o : {"nombre", "rif", "direccion", "especial", "no-especial", "igtf"})
    if (c.args.bandera(o))
      return true;
  return false;
}

}  // namespace

DatosEmpresa empresaDe(HostSql& db) {
  DatosEmpresa e;
  auto rs = db.openrecordset(
      "SELECT Nombre, Rif, Direccion, ContribuyenteEspecial, porcentajeIGTF456 FROM hostEmpresa "
      "WHERE id = 1");
  if (rs->Eof())
    return e;
  e.nombre = NzTexto(rs->Fields(0));
  e.rif = NzTexto(rs->Fields(1));
  e.direccion = NzTexto(rs->Fields(2));
  e.especial = !rs->Fields(3).isNull() && CBool(rs->Fields(3));
  e.igtf = NzDouble(rs->Fields(4));
  return e;
}

std::string encabezadoEmpresa(const DatosEmpresa& e) {
  return e.nombre + (e.rif.empty() ? "" : (e.nombre.empty() ? "RIF " : " · RIF ") + e.rif);
}

int empresa(Contexto& c) {
  const DatosEmpresa actual = empresaDe(*c.db);
  Salida salida(c.out, c.args.bandera("json"));
  if (!algunaOpcion(c)) {
    salida.empresa(actual);
    return kExito;
  }
  const Cambio k = cambioDe(c, actual);
  if (k.detalle.empty()) {
    salida.empresa(actual);
    return kExito;
  }
  Asiento a;
  a.maquina = maquinaDe(c);
  a.accion = "empresa";
  a.detalle = k.detalle;
  if (haySupervisores(c))
    a.aprobador = aprobacion(c, "cambiar los datos de la empresa", nivelExigido("NivelAprobacion"));
  c.db->EnTransaccion([&] {
    guardar(*c.db, k.nueva);
    anotar(*c.db, a);
  });
  salida.empresa(k.nueva);
  return kExito;
}

}  // namespace caja::app
