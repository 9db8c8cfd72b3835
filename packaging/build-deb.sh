#!/usr/bin/env bash
# SPDX-License-Identifier: GPL-3.0-or-later
# Makes the Debian package in build/package and has it checked.
set -euo pipefail
cd "$(dirname "$(readlink -f "$0")")/.."
umask 022
launcher=()
if command -v ccache >/dev/null; then
    launcher=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
    # What ./dev build has compiled serves the package.
    export CCACHE_BASEDIR=$PWD CCACHE_NOHASHDIR=1 CCACHE_SLOPPINESS=time_macros
fi
cmake --preset release -B build/package -DCMAKE_INSTALL_PREFIX=/usr -DZOFRA_TESTS=OFF "${launcher[@]}" >/dev/null
cmake --build build/package -j"$(nproc)" >/dev/null
# The very flags of ./dev build; what the linker made of them is looked at in the binary.
tests/tools/hardening.py build/package/bin/zofrazofra
desktop-file-validate packaging/desktop/be.zofra.ZofraZofra.desktop
# The screenshots' host is the station group's to set up, so links are not followed.
appstreamcli validate --strict --no-net build/package/packaging/be.zofra.ZofraZofra.metainfo.xml
(cd build/package && cpack >/dev/null)
package=$(ls -t build/package/zofrazofra_*.deb | head -1)
lintian --fail-on error,warning "$package"
printf 'built %s\n' "$package"
