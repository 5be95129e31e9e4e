# Shared by the run and test scripts: install what is missing, then configure and build.
set -euo pipefail

LANMIRA_ROOT="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
LANMIRA_BUILD="${LANMIRA_BUILD:-$LANMIRA_ROOT/build}"

lanmira_install_packages() {
    local wanted=() missing=() p
    for list in "$@"; do
        while read -r p; do
            [[ -z "$p" || "$p" == \#* ]] && continue
            wanted+=("$p")
        done < "$LANMIRA_ROOT/scripts/$list"
    done
    for p in "${wanted[@]}"; do
        dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
    done
    [[ ${#missing[@]} -eq 0 ]] && return 0
    echo "Installing missing packages: ${missing[*]}"
    local sudo=""
    [[ $(id -u) -ne 0 ]] && sudo="sudo"
    $sudo apt-get update -qq
    DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -qq --no-install-recommends "${missing[@]}"
}

lanmira_build() {
    local extra=("$@")
    cmake -S "$LANMIRA_ROOT" -B "$LANMIRA_BUILD" -G Ninja "${extra[@]}" >/dev/null
    cmake --build "$LANMIRA_BUILD" --parallel "$(nproc)"
}
