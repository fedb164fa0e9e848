# What the scripts share; they source it and find themselves in the root of the tree.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

build_packages=(g++ cmake ninja-build pkg-config libdcmtk-dev dcmtk libcli11-dev libfmt-dev nlohmann-json3-dev)
test_packages=("${build_packages[@]}" libgtest-dev libbenchmark-dev file dpkg-dev)

export CTEST_PARALLEL_LEVEL=${CTEST_PARALLEL_LEVEL:-$(nproc)}
if command -v ccache >/dev/null; then
    export CMAKE_CXX_COMPILER_LAUNCHER=ccache CCACHE_BASEDIR=$PWD CCACHE_NOHASHDIR=1 # what one clone built serves others
fi

say() {
    printf '\n==> %s\n' "$*"
}

# need PACKAGE...: installs those Debian packages that are missing.
need() {
    local package missing=() root=()
    for package; do
        [[ $(dpkg-query -W -f '${db:Status-Status}' "$package" 2>/dev/null) == installed ]] || missing+=("$package")
    done
    if [[ ${#missing[@]} -eq 0 ]]; then
        return
    fi
    if ! command -v apt-get >/dev/null; then
        say "No apt-get here; going on in the hope that you have what Debian calls: ${missing[*]}"
        return
    fi
    say "Installing ${missing[*]}"
    [[ $(id -u) -eq 0 ]] || root=(sudo)
    root+=(env DEBIAN_FRONTEND=noninteractive)
    "${root[@]}" apt-get update -qq
    "${root[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}"
}

# build PRESET: configures and builds a preset of CMakePresets.json in build/PRESET.
build() {
    say "Building the preset $1 in build/$1"
    cmake --preset "$1" && cmake --build --preset "$1"
}
