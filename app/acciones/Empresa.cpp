#include "app/acciones/Empresa.h"

#include "app/datos/Consultas.h"
#include "app/datos/Json.h"

namespace caja::app {

namespace {

std::string siNo(bool b) {
  return b ? "sí" : "no";
}

// The data as the change leaves it, and what changed, for the trail.
struct Cambio {
  DatosEmpresa nueva;
  std::string detalle;
};

void anotarCambio(Cambio& k, const std::string& que, const std::string& antes,
                  const std::string& despues) {
  k.detalle += (k.detalle.empty() ? "" : "; ") + que + ": " + antes + " -> " + despues;
}

Cambio cambioDe(const CambioEmpresa& c, const DatosEmpresa& actual) {
  Cambio k{actual, ""};
  const auto texto = [&](const char* que, const std::optional<std::string>& v, std::string& campo) {
    if (v && *v != campo) {
      anotarCambio(k, que, campo, *v);
      campo = *v;
    }
  };
  texto("nombre", c.nombre, k.nueva.nombre);
  texto("rif", c.rif, k.nueva.rif);
  texto("direccion", c.direccion, k.nueva.direccion);
  if (c.especial) {
    if (*c.especial != k.nueva.especial)
      anotarCambio(k, "especial", siNo(k.nueva.especial), siNo(*c.especial));
    k.nueva.especial = *c.especial;
  }
  if (c.igtf) {
    if (*c.igtf != k.nueva.igtf)
      anotarCambio(k, "igtf", textoDeTasa(k.nueva.igtf), textoDeTasa(*c.igtf));
    k.nueva.igtf = *c.igtf;
    // Only a special taxpayer charges IGTF: a shop that sets a percentage
    // means to charge it, unless it says it is not one.
    if (*c.igtf > 0 && !k.nueva.especial && !(c.especial && !*c.especial)) {
      k.detalle += "; especial: no -> sí";
      k.nueva.especial = true;
    }
  }
  return k;
}

}  // namespace

DatosEmpresa cambiarEmpresa(Puesto& p, const CambioEmpresa& cambio) {
  const Cambio k = cambioDe(cambio, empresaDe(p.db()));
  if (k.detalle.empty())
    return k.nueva;
  Asiento a;
  a.maquina = p.maquina();
  a.accion = "empresa";
  a.detalle = k.detalle;
  if (hayPersonas(p.db(), Rol::Supervisor))
    a.aprobador = p.aprobacion("cambiar los datos de la empresa", nivelExigido("NivelAprobacion"));
  p.db().EnTransaccion([&] {
    guardarEmpresa(p.db(), k.nueva);
    anotar(p.db(), a);
  });
  return k.nueva;
}

}  // namespace caja::app
