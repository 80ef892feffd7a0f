# shellcheck shell=bash
# What check-fleet and bench-fleet share: the engines from the npm registry, and a folder in which
# the page's commands are called by their names. To be sourced in the root of the checkout.
. scripts/packages.sh
scripts/install-packages "${packages_build[@]}" "${packages_fleet[@]}"
# Another Node.js than Debian's brings an npm of its own.
command -v npm >/dev/null || scripts/install-packages "${packages_node[@]}"

cmake --preset demo >/dev/null
cmake --build --preset demo --target vdrdump vdr_demo videodatarecorder >/dev/null

here=$PWD
fleet=$here/build/fleet
export FLEET_PACKAGES=$fleet/npm
engines=(@duckdb/node-api@1.5.6-r.1 chdb@3.4.0 dt-sql-parser@4.5.1 esbuild@0.28.2)
if [ "$(cat "$fleet/npm/installed" 2>/dev/null)" != "${engines[*]}" ]; then
    rm -rf "$fleet/npm"
    mkdir -p "$fleet/npm"
    npm install --no-save --no-audit --no-fund --loglevel=error --prefix "$fleet/npm" \
        "${engines[@]}" >/dev/null
    echo "${engines[*]}" >"$fleet/npm/installed"
fi

# command_for PATH SCRIPT: an executable that is one of our scripts.
command_for() {
    printf '#!/bin/sh\nexec node "%s" "$@"\n' "$here/tests/fleet/$2" >"$1"
    chmod 755 "$1"
}

# Makes an empty folder below build/fleet and goes there. `today` stands in front of the PATH for
# today's ClickHouse.
enter_fleet() {
    rm -rf "${fleet:?}/$1"
    mkdir -p "$fleet/$1/bin" "$fleet/$1/today"
    cd "$fleet/$1" || exit
    ln -s "$here/build/demo/tools/vdrdump" bin/vdrdump
    command_for bin/duckdb duckdb.mjs
    command_for today/clickhouse-client clickhouseClient.mjs
    export PATH=$PWD/bin:$PATH FLEET_CLICKHOUSE=$PWD/tables
}
