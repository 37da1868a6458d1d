#pragma once

#include <QMainWindow>
#include <atomic>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <thread>

#include "app/acciones/Puesto.h"
#include "app/envio/Politica.h"
#include "app/ventana/EnVentana.h"

class QLabel;
class QTableWidget;
class QTimer;

namespace caja::app {

// The till's window: this session's movements, the drawer per method, the
// rate and a status line that keeps itself up to date, and every act of the
// day on a key shown on its button. Each act calls the same till actions as
// the command line. A sale, a refund and cash in or out are saved where the
// command line saves them (the file, or the journal at a till on a server,
// whose sender ships them), so that the window never waits on the link for
// them; whether the server answers is asked, and an act on the server runs,
// off the window's thread. An error is said in Spanish and the window stays;
// Escape backs out of the act in progress with nothing saved; no key ends
// the program.
class VentanaCaja : public QMainWindow {
 public:
  // The till of `db` (a server's URI, or a file; the user's file when none)
  // at `maquina` (this till's number when none), for `operador` while the
  // shop has no cashiers registered.
  VentanaCaja(std::optional<std::string> db, std::optional<std::int32_t> maquina,
              std::string operador);
  ~VentanaCaja() override;

  // Signs the cashier in and finds this till's open session, or opens one:
  // false when the cashier backed out of signing in.
  bool empezar();
  std::int32_t sesion() const { return sesion_; }
  // Reads again what the screen shows.
  void refrescar();
  // Lets the window close (the program is ending it, not a key).
  void permitirCierre() { cerrable_ = true; }
  // Told each movement's number once it is committed, before the screen
  // shows it (what a measurement of the save waits for).
  std::function<void(std::int32_t)> alGuardar = [](std::int32_t) {};

 protected:
  void closeEvent(QCloseEvent* evento) override;
  void keyPressEvent(QKeyEvent* evento) override;

 private:
  void crearControles();
  QWidget* boton(const char* tecla, const QString& texto, void (VentanaCaja::*acto)());
  // Runs an act: a refusal or an error is said and the window goes on.
  void actuar(const std::function<void()>& acto);
  // An act of `acceso` on the till's data: here on the file or the journal;
  // at a till on a server, off the window's thread once it is connected.
  void hacer(Acceso acceso, const std::function<void(Puesto&)>& acto);
  // The till as an act of `acceso` finds it, on this thread: where it
  // saves, or the server.
  Puesto puesto(Acceso acceso);
  bool enLocal(Acceso acceso) const;
  std::shared_ptr<HostSql> conectar();
  void fuera(const std::function<void()>& trabajo);
  void decir(const std::string& texto);
  // The selected movement's number where it was read, and its row.
  std::optional<int> filaElegida() const;
  QStringList medios();
  void imprimir(std::int32_t transId);
  void estado();
  void preguntarServidor();

  // A movement saved where sales are saved, from its form's values (none
  // when the cashier backed out), and its receipt after a sale or a refund.
  void guardar(std::optional<Venta> v,
               const std::function<std::int32_t(Puesto&, const Venta&)>& accion, bool conRecibo);
  void moverEfectivo(const char* clasificacion);
  void vender();
  void devolver();
  void entrada();
  void salida();
  void anular();
  void aparcar();
  void retomar();
  void reimprimir();
  void tasa();
  void cierre();
  void mes();

  std::optional<std::string> db_;
  std::optional<std::int32_t> maquinaDada_;
  std::int32_t maquina_ = 0;
  std::int32_t sesion_ = 0;
  FirmasDeVentana firmas_;
  Almacen local_;                  // the file, or this till's journal
  std::optional<Almacen> remoto_;  // the server, while an act needs it
  bool cerrable_ = false;
  bool servidorEnLinea_ = true;  // until the first look says otherwise
  bool ocupado_ = false;         // an act runs off the window's thread
  // Read by the server's look, on its own thread.
  std::shared_ptr<std::atomic<bool>> viva_ = std::make_shared<std::atomic<bool>>(true);
  std::shared_ptr<std::atomic<bool>> sondeando_ = std::make_shared<std::atomic<bool>>(false);
  std::thread sondeo_;
  std::vector<FilaMovimiento> filas_;
  std::map<int, void (VentanaCaja::*)()> teclas_;

  QTableWidget* movimientos_ = nullptr;
  QTableWidget* cajon_ = nullptr;
  QLabel* tasa_ = nullptr;
  QLabel* cabecera_ = nullptr;
  QLabel* estado_ = nullptr;
  QTimer* reloj_ = nullptr;
};

// `caja ventana`: opens the till's window and runs it until it is closed.
int ejecutarVentana(std::optional<std::string> db, std::optional<std::int32_t> maquina,
                    std::string operador);

}  // namespace caja::app
