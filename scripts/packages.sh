# What the scripts need from Debian, by purpose. To be sourced.
# shellcheck disable=SC2034
packages_build=(g++ cmake ninja-build libjsoncpp-dev libcli11-dev libsqlite3-dev)
packages_demo=(gnuplot-nox)
packages_test=(libgtest-dev gnuplot-nox sqlite3 locales)
packages_package=(dpkg-dev)
packages_bench=(libbenchmark-dev)
packages_gstreamer=(libgstreamer1.0-dev gstreamer1.0-tools gstreamer1.0-plugins-base gstreamer1.0-plugins-good gstreamer1.0-plugins-ugly)
packages_fleet=(clickhouse-common clickhouse-client sqlite3 jq zstd)
packages_node=(nodejs npm)
packages_clang=(clang libclang-rt-14-dev llvm)
packages_check=(clang-format clang-tidy)
packages_arm64=(g++-aarch64-linux-gnu qemu-user libc6-dev:arm64 libstdc++-12-dev:arm64 libjsoncpp-dev:arm64 libgtest-dev:arm64)
packages_libcxx=(libc++-14-dev libc++abi-14-dev)
