#!/usr/bin/env bash
# Installs the Debian packages needed to build and test QuorinGlyco, only those
# that are missing (with --benchmarks also those of the benchmarks, with
# --fuzzers those of the fuzz targets). Runs
# unattended: as root directly, otherwise through sudo.
set -euo pipefail

# libcli11-dev: the command line; nlohmann-json3-dev: the report's data;
# libexpat1-dev, zlib1g-dev, libpwiz-dev, libboost-dev: the mzML and mzXML reader;
# libpwiz-tools: msconvert, which the tests use to write mzML and mzXML;
# chromium: the tests open the HTML report in it; libpugixml-dev: the mzIdentML
# and pepXML export; snakemake: the tests run the workflow (workflow/Snakefile)
# on a generated study.
packages=(cmake make g++ libgtest-dev libbenchmark-dev libcli11-dev nlohmann-json3-dev
          libexpat1-dev zlib1g-dev libpwiz-dev libboost-dev libpwiz-tools chromium
          libpugixml-dev snakemake)
# topp (OpenMS) reads the exported files in the tests, as no one here wrote it;
# where it can't be had the tests skip those checks with one message.
optional=(topp)
# --benchmarks adds what only the measurements need: Boost's libraries for
# bench_mzml's comparison with ProteoWizard's reader, and GNU time for the peak
# memory that scripts/bench_e2e.sh reports.
if [ "${1:-}" = "--benchmarks" ]; then
  packages+=(libboost-filesystem-dev libboost-iostreams-dev libboost-thread-dev time)
fi
# --fuzzers adds clang and its runtime libraries (libFuzzer, ASan, UBSan) for
# the fuzz targets that scripts/fuzz_smoke.sh builds.
if [ "${1:-}" = "--fuzzers" ]; then
  packages+=(clang libclang-rt-14-dev)
fi

missing=()
for package in "${packages[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q "install ok installed"; then
    missing+=("$package")
  fi
done

optional_missing=()
for package in "${optional[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q "install ok installed"; then
    optional_missing+=("$package")
  fi
done

if [ ${#missing[@]} -eq 0 ] && [ ${#optional_missing[@]} -eq 0 ]; then
  exit 0
fi

if [ "$(id -u)" -eq 0 ]; then
  as_root=()
elif command -v sudo >/dev/null 2>&1; then
  as_root=(sudo -n)
elif [ ${#missing[@]} -eq 0 ]; then
  echo "setup.sh: ${optional_missing[*]} not installed and no root rights; the tests skip the OpenMS checks"
  exit 0
else
  echo "setup.sh: missing packages (${missing[*]}) and no root rights to install them" >&2
  exit 1
fi

"${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get update </dev/null
if [ ${#missing[@]} -gt 0 ]; then
  echo "setup.sh: installing ${missing[*]}"
  "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
    apt-get install -y --no-install-recommends "${missing[@]}" </dev/null
fi
if [ ${#optional_missing[@]} -gt 0 ]; then
  echo "setup.sh: installing ${optional_missing[*]}"
  "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
    apt-get install -y --no-install-recommends "${optional_missing[@]}" </dev/null ||
    echo "setup.sh: ${optional_missing[*]} could not be installed; the tests skip the OpenMS checks"
fi
