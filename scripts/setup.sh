#!/usr/bin/env bash
# Installs the Debian packages the build needs, only those that are missing.
set -euo pipefail

packages=(
  build-essential cmake ninja-build pkg-config
  libsqlite3-dev libicu-dev zlib1g-dev libminizip-dev libxxhash-dev
  libgtest-dev libgmock-dev libbenchmark-dev unzip
)

missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
[ ${#missing[@]} -eq 0 ] && exit 0

if [ "$(id -u)" -eq 0 ]; then sudo=(); else sudo=(sudo); fi
echo "setup: installing ${missing[*]}" >&2
"${sudo[@]}" apt-get update -qq
DEBIAN_FRONTEND=noninteractive "${sudo[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}" >&2
