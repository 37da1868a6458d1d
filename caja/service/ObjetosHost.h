#pragma once

#include <memory>
#include <string>
#include <vector>

#include "caja/base/Exporta.h"
#include "caja/base/Objeto.h"
#include "caja/base/Variant.h"

namespace caja {

// The host objects the component obtains through `Factoria::CrearObjeto`, as
// interfaces: the component asks for a name and casts to what it needs.

// "Empresa": the company's fiscal data.
class CAJA_EXPORT Empresa : public Objeto {
 public:
  virtual std::string FormatoMEX() = 0;
  // Boolean, or Null when the host does not know.
  virtual Variant ContribuyenteEspecial() = 0;
  virtual double porcentajeIGTF456() = 0;
};

// What `Instanciador::Entidad` returns.
class CAJA_EXPORT Entidad : public Objeto {
 public:
  virtual std::string Nombre() = 0;
};

// "Instanciador": finds the host's entities and documents.
class CAJA_EXPORT Instanciador : public Objeto {
 public:
  // nullptr when the host has no such entity.
  virtual std::shared_ptr<caja::Entidad> Entidad(const std::string& tipo,
                                                 const std::string& codigo) = 0;
  virtual std::shared_ptr<Objeto> EntidadDOCUMENTO(const std::string& tipoDoc,
                                                   std::int32_t numero) = 0;
};

// "posExt": the host's extension procedures, run by name.
class CAJA_EXPORT PosExt : public Objeto {
 public:
  // Raises when the procedure does not exist or fails. A procedure may
  // replace its arguments: they are passed by reference.
  virtual Variant Run(const std::string& procedimiento, std::vector<Variant>& argumentos) = 0;
  // The value of an expression of the extension, such as "isValid".
  virtual Variant Eval(const std::string& expresion) = 0;
};

// The host's UI theme. The dialogs layer asks it to style a form through its
// own toolkit-specific interface; the model only keeps it.
class TemaUI : public Objeto {};

// A picture as `loadFileIcon` returns it: the file it was read from. The
// dialogs layer turns it into an icon of its toolkit.
class CAJA_EXPORT Imagen : public Objeto {
 public:
  explicit Imagen(std::string ruta) : ruta_(std::move(ruta)) {}
  const std::string& ruta() const { return ruta_; }

 private:
  std::string ruta_;
};

}  // namespace caja
