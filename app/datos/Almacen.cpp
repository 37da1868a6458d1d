#include "app/datos/Almacen.h"

#include "app/datos/Carpeta.h"
#include "app/datos/Diario.h"
#include "caja/base/Texto.h"

namespace caja::app {

std::string tipoDe(const std::string& clasificacion) {
  for (const char* tipo : {kDevolucion, kEntrada, kSalida})
    if (equalsIgnoreCase(clasificacion, tipo))
      return lowerAscii(tipo);
  return "venta";
}

std::shared_ptr<HostSql> Almacen::diario() const {
  return enDiario ? db : abrirDiario(false);
}

std::string Almacen::nombreDe(std::int32_t numero) const {
  return (enDiario && conServidor ? "Movimiento local " : "Movimiento ") + std::to_string(numero);
}

NumeroVisible numeroVisible(Almacen& a, std::int32_t transId) {
  if (!a.enDiario || !a.conServidor)
    return {transId};
  const std::int32_t enServidor = numeroEnServidor(*a.db, transId);
  return enServidor > 0 ? NumeroVisible{enServidor} : NumeroVisible{transId, true};
}

std::int32_t numeroDondeCorre(Almacen& a, std::int32_t numero) {
  return a.enDiario && a.conServidor ? numeroLocalDe(*a.db, numero) : numero;
}

}  // namespace caja::app
