#pragma once

// Stand-ins for the host suite's objects: each records what the component
// asks of it and answers from fields a test sets.

#include <deque>
#include <functional>
#include <string>
#include <vector>

#include "caja/service/DialogosCaja.h"
#include "caja/service/HostUtil.h"
#include "caja/service/ObjetosHost.h"

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

// A host extension that records the procedures run, can fail on demand and
// lets a test script what a procedure does with its arguments.
class PosExtGrabadora : public PosExt {
 public:
  std::vector<std::string> llamadas;
  std::shared_ptr<Objeto> recibido;
  bool fallar = false;
  Variant esValido = Variant(true);
  std::function<void(std::vector<Variant>&)> alCorrer;

  Variant Run(const std::string& p, std::vector<Variant>& args) override {
    llamadas.push_back(p);
    recibido = args.at(0).asObject();
    if (fallar)
      throw CajaError(438, "posExt", "no existe");
    if (alCorrer)
      alCorrer(args);
    return Variant();
  }
  Variant Eval(const std::string& expresion) override {
    llamadas.push_back("Eval " + expresion);
    return esValido;
  }
};

// Dialogs that record how they were opened and answer from fields.
class DialogosFalsos : public DialogosCaja {
 public:
  std::string titulo;
  Currency venta, iva, credito;
  Currency montoNotificado = Currency::fromUnits(7);
  bool cancelado = false;
  std::string codigoNuevo;
  std::int16_t contextoRecibido = 0;
  std::int16_t contextoDejado = 0;

  std::shared_ptr<CVarelta> Cobrar(const std::string& t, Currency v, Currency i, Currency c,
                                   Aplicar2602 alCambiarIVA) override {
    titulo = t;
    venta = v;
    iva = i;
    credito = c;
    alCambiarIVA(montoNotificado, cancelado);
    return nullptr;
  }
  void DefinirMediosPago() override {}
  void DefinirMedioPagoNuevo(const std::string& codigo, std::int16_t& contexto) override {
    codigoNuevo = codigo;
    contextoRecibido = contexto;
    contexto = contextoDejado;
  }
};

}  // namespace caja::test
