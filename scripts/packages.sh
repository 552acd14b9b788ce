# Sourced by the scripts beside it.

# Installs those of the named Debian packages that are missing; silent when none is.
need_packages() {
  local missing=() package sudo=()
  for package in "$@"; do
    dpkg -s "$package" 2> /dev/null | grep -q '^Status: install ok installed' || missing+=("$package")
  done
  if ((${#missing[@]} == 0)); then return; fi

  echo "== installing ${missing[*]}"
  if ((EUID != 0)); then sudo=(sudo); fi
  "${sudo[@]}" apt-get update -qq
  "${sudo[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "${missing[@]}" > /dev/null
}
