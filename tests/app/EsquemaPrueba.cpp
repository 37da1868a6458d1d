#include <gtest/gtest.h>

#include "app/datos/Esquema.h"

// The program's tables are in every database its in-process tests open, as
// they are in every one the program opens: added once the tests start.
namespace {

class ConEsquema : public ::testing::Environment {
 public:
  void SetUp() override { caja::app::agregarEsquema(); }
};

::testing::Environment* const kEsquema = ::testing::AddGlobalTestEnvironment(new ConEsquema);

}  // namespace
