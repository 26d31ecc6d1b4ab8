# Sourced by ./run and ./test: installs what packages/debian.txt lists and this machine lacks.

packages_listed() { sed -e 's/#.*//' -e 's/[[:space:]]//g' -e '/^$/d' "$1"; }

packages_missing() {
  packages_listed "$1" | while read -r package; do
    status=$(dpkg-query -W -f='${Status}' "$package" 2>/dev/null) || status=
    [ "$status" = "install ok installed" ] || printf '%s\n' "$package"
  done
}

# On a system without apt: the line that its own package manager wants, and exit status 69 (unavailable).
packages_elsewhere() {
  echo "This system has no apt-get, so install the packages yourself and call the build by hand:" >&2
  if command -v dnf >/dev/null; then
    echo "  dnf install gcc-c++ cmake ninja-build ccache pkgconf qt6-qtbase-devel qt6-qtmultimedia-devel qt6-qtsvg-devel qt6-linguist libplist-devel openssl-devel elfutils-devel bsdtar unzip iproute lcms2-devel zlib-devel expected-devel xxhash-devel cli11-devel json-devel ffmpeg-devel ffmpeg librsvg2-devel clang clang-tools-extra compiler-rt gtest-devel gmock-devel google-benchmark-devel python3 weasyprint python3-markdown util-linux mediainfo perl-Image-ExifTool gstreamer1 gstreamer1-plugins-good poppler-utils jq desktop-file-utils appstream mandoc" >&2
  elif command -v pacman >/dev/null; then
    echo "  pacman -S --needed gcc cmake ninja ccache pkgconf qt6-base qt6-multimedia qt6-svg qt6-tools libplist openssl libelf libarchive unzip iproute2 lcms2 zlib tl-expected xxhash cli11 nlohmann-json ffmpeg librsvg clang gtest benchmark python python-weasyprint python-markdown util-linux mediainfo perl-image-exiftool gstreamer gst-plugins-good poppler jq desktop-file-utils appstream mandoc" >&2
  elif command -v zypper >/dev/null; then
    echo "  zypper install gcc-c++ cmake ninja ccache pkgconf qt6-base-devel qt6-multimedia-devel qt6-svg-devel qt6-linguist-devel libplist-devel libopenssl-devel libdw-devel bsdtar unzip iproute2 liblcms2-devel zlib-devel expected-devel xxhash-devel cli11-devel nlohmann_json-devel ffmpeg-5-libavformat-devel ffmpeg librsvg-devel clang gtest gmock benchmark-devel python3 python3-weasyprint python3-Markdown util-linux mediainfo exiftool gstreamer-utils gstreamer-plugins-good poppler-tools jq desktop-file-utils AppStream mandoc" >&2
  elif command -v brew >/dev/null; then
    echo "  brew install cmake ninja ccache pkgconf qt libplist openssl libarchive unzip little-cms2 zlib tl-expected xxhash cli11 nlohmann-json ffmpeg librsvg llvm googletest google-benchmark python3 media-info exiftool gstreamer poppler jq mandoc" >&2
  else
    echo "  (the Debian names are in packages/debian.txt)" >&2
  fi
  echo "  cmake --workflow --preset release" >&2
  exit 69
}

packages_install() {
  command -v apt-get >/dev/null && command -v dpkg-query >/dev/null || packages_elsewhere
  missing=$(packages_missing "$1")
  [ -z "$missing" ] && return 0
  as_root=
  if [ "$(id -u)" -ne 0 ]; then
    command -v sudo >/dev/null || {
      echo "These packages are missing, and installing them takes root: $(echo "$missing" | tr '\n' ' ')" >&2
      exit 69
    }
    as_root=sudo
  fi
  echo "Installing $(echo "$missing" | wc -l) packages..." >&2
  $as_root apt-get update -qq >&2
  # shellcheck disable=SC2086
  $as_root env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends $missing >/dev/null
}
