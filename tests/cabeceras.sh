#!/usr/bin/env bash
# The headers `cmake --install` ships are exactly the public face, each one
# complete by itself: it includes only installed headers (never Qt's nor a
# database's) and compiles alone. Any internal header installed fails here.
set -euo pipefail
build=$1
tmp=$(mktemp -d)
trap 'rm -rf "$tmp"' EXIT
cmake --install "$build" --prefix "$tmp" --component dev >/dev/null

esperadas="base/CajaError.h base/Collection.h base/Currency.h base/Exporta.h base/Fecha.h
base/Objeto.h base/Variant.h catalog/AtributosMedioPago.h catalog/CMedioPago.h
catalog/ClaseIngresoSesion.h drawer/DetalleEfectivo.h drawer/TransaccionEfectivo.h
facade/CServiciosCaja.h host/HostSql.h host/IniSettingsStore.h host/PostgresFactoria.h
host/SqliteFactoria.h movement/CDetalleConfirmacion.h movement/CDetalleDenominacion.h
movement/CDetalleIngreso.h movement/CDocsMovCaja.h movement/CVarelta.h service/CServiciosCaja.h
service/DialogosCaja.h service/Factoria.h service/HostUtil.h service/ObjetosHost.h
service/Recordset.h service/Settings.h service/TransaccionHost.h"
if grep -q "^CAJA_WITH_QT:BOOL=ON" "$build/CMakeCache.txt"; then
  esperadas="$esperadas dialogs/DialogosQt.h host/QtHostUtil.h"
fi
instaladas=$(cd "$tmp/include/caja" && find . -type f | sed 's|^\./||' | sort)
if ! diff -u <(tr ' ' '\n' <<<"$esperadas" | grep . | sort) <(echo "$instaladas"); then
  echo "Las cabeceras instaladas no son las públicas (- esperada, + instalada)" >&2
  exit 1
fi
for h in $instaladas; do
  { grep -o '#include [<"][^>"]*[>"]' "$tmp/include/caja/$h" || true; } | sed 's/#include [<"]//; s/[>"]$//' |
    while read -r incluida; do
      case "$incluida" in
        caja/*) [ -f "$tmp/include/$incluida" ] ||
          { echo "$h incluye $incluida, que no se instala" >&2; exit 1; } ;;
        *.h) echo "$h incluye $incluida, ajena a la biblioteca estándar" >&2; exit 1 ;;
      esac
    done
  echo "#include <caja/$h>" | ${CXX:-c++} -std=c++20 -fsyntax-only -I "$tmp/include" -x c++ - ||
    { echo "$h no compila sola" >&2; exit 1; }
done
