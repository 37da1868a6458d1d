# Installs the Debian packages the build needs, once, when any is missing;
# extra packages (the test server) may be named as arguments.
# Sourced by scripts/test and scripts/demo.

CAJA_PAQUETES=(cmake ninja-build g++ pkg-config qt6-base-dev libsqlite3-dev libpq-dev libsodium-dev libgtest-dev
  libgmock-dev libbenchmark-dev clang libclang-rt-dev xvfb xauth clang-format fonts-dejavu-core qt6-translations-l10n
  qt6-charts-dev libqt6opengl6-dev)

caja_instalar_dependencias() {
  local faltan=()
  for p in "${CAJA_PAQUETES[@]}" "$@"; do
    dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || faltan+=("$p")
  done
  [ ${#faltan[@]} -eq 0 ] && return 0
  echo "Instalando: ${faltan[*]}"
  local sudo=""
  [ "$(id -u)" -ne 0 ] && sudo="sudo"
  $sudo apt-get update -qq
  DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -qq --no-install-recommends "${faltan[@]}"
}
