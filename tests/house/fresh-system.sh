# For sh's dot: makes $root/system, a system with nothing but its base, and removes it at the end. Needs root.
root=$(mktemp -d)
trap 'umount -q "$root/system/proc" || true; rm -rf --one-file-system "$root"' EXIT

fail() { echo "$1"; exit 1; }
quietly() { "$@" >"$root/log" 2>&1 || { tail -n 30 "$root/log"; fail "failed: $*"; }; }
inside() {
    chroot "$root/system" env -i PATH=/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin HOME=/root \
        DEBIAN_FRONTEND=noninteractive "$@"
}
install_inside() { quietly inside apt-get install -q -y --no-install-recommends "$@"; }

# From where this machine has its packages, and in its way of reaching them.
site=$(apt-get indextargets --format '$(SITE)' 'Created-By: Packages' | head -n 1)
release=$(sed -n 's/^VERSION_CODENAME=//p' /etc/os-release)
quietly debootstrap --variant=minbase "$release" "$root/system" "$site"
apt-config dump | grep -E '^Acquire::.*Proxy' >"$root/system/etc/apt/apt.conf.d/proxy" || true
