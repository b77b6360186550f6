# Shared by the scripts of this folder: strict mode, steps, failures with a reason. Sourced, not run.
set -eEuo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
jobs=${QEL_JOBS:-$(nproc)}
step_name="starting"

# step TEXT: says what comes next; a failure from here on names it.
step() {
    step_name=$1
    printf '\n== %s\n' "$1"
}

fail() {
    printf '\n%s: %s\n' "${0##*/}" "$1" >&2
    exit 1
}

trap 'status=$?; printf "\n%s: failed while %s (exit code %d; the reason stands above)\n" \
    "${0##*/}" "$step_name" "$status" >&2; exit "$status"' ERR

# as_root COMMAND...: runs it as it is for root, through sudo for anybody else.
as_root() {
    if [ "$(id -u)" -eq 0 ]; then
        "$@"
    elif command -v sudo > /dev/null; then
        sudo "$@"
    else
        fail "'$*' needs root: run this as root, or install sudo"
    fi
}

# install_packages LIST...: installs what the lists name and the machine lacks; "package(command)" only without the command.
install_packages() {
    local wanted missing=() package command
    wanted=$(sed 's/#.*//' "$@" | tr -s ' \n' '\n' | sed '/^$/d' | sort -u)
    for package in $wanted; do
        command=${package#*\(}
        if [ "$command" != "$package" ] && command -v "${command%)}" > /dev/null; then continue; fi
        package=${package%%\(*}
        [ "$(dpkg-query -W -f '${Status}' "$package" 2> /dev/null)" = "install ok installed" ] || missing+=("$package")
    done
    if [ ${#missing[@]} -eq 0 ]; then
        echo "all of them are installed"
        return
    fi
    echo "missing: ${missing[*]}"
    as_root apt-get update -q
    as_root env DEBIAN_FRONTEND=noninteractive apt-get install -qy --no-install-recommends "${missing[@]}"
}
