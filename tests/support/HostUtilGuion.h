#pragma once

#include <deque>
#include <string>
#include <vector>

#include "caja/service/HostUtil.h"

namespace caja::test {

// A utility object that records what the component shows and answers its
// yes/no questions from a script (then "no").
class HostUtilGuion : public HostUtil {
 public:
  std::vector<std::string> mensajes;
  std::vector<std::string> preguntas;
  std::deque<bool> respuestas;
  std::vector<std::string> errores;  // "ubicacion|numero|descripcion"
  std::string titulo;

  void MostrarMensaje(const std::string& texto) override { mensajes.push_back(texto); }
  bool Preguntar(const std::string& texto) override {
    preguntas.push_back(texto);
    if (respuestas.empty())
      return false;
    const bool r = respuestas.front();
    respuestas.pop_front();
    return r;
  }
  void ReportarError(const CajaError& e, const std::string& ubicacion) override {
    errores.push_back(ubicacion + "|" + std::to_string(e.number()) + "|" + e.description());
  }
  void EstablecerTitulo(const std::string& t) override { titulo = t; }
  std::string Titulo() const override { return titulo; }
};

}  // namespace caja::test
