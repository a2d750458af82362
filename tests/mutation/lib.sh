# SPDX-FileCopyrightText: the orv-enabler authors
# SPDX-License-Identifier: Apache-2.0
#
# Functions of run and sample for the copy of the tree that they edit. Sourced, not executed.

# copy_tree ROOT TREE LIST: makes TREE a copy of the sources of ROOT. Unchanged files are not
# written, so objects built earlier in the copy stay valid. Writes the file names to LIST.
copy_tree() {
  mkdir -p "$2"
  (cd "$1" && find CMakeLists.txt cmake src platform tests -type f 2>/dev/null | LC_ALL=C sort) >"$3"
  while IFS= read -r file; do
    cmp -s "$1/$file" "$2/$file" && continue
    mkdir -p "$(dirname "$2/$file")"
    cp "$1/$file" "$2/$file"
  done <"$3"
  # A file that was moved or deleted must not be built or edited any more.
  (cd "$2" && find CMakeLists.txt cmake src platform tests -type f 2>/dev/null | LC_ALL=C sort) |
    LC_ALL=C comm -13 "$3" - | while IFS= read -r file; do rm -f "$2/$file"; done
}

# configure_tree TREE BUILD LOG [CMAKE-ARGUMENT...]: configures the daemon, the fake and the unit
# tests of the daemon, without optimisation. Prints the log and exits on failure.
configure_tree() {
  ct_tree=$1 ct_build=$2 ct_log=$3
  shift 3
  ! command -v ccache >/dev/null || set -- "$@" -DCMAKE_CXX_COMPILER_LAUNCHER=ccache
  for linker in mold gold; do
    command -v "ld.$linker" >/dev/null || continue
    set -- "$@" "-DCMAKE_EXE_LINKER_FLAGS=-fuse-ld=$linker" "-DCMAKE_SHARED_LINKER_FLAGS=-fuse-ld=$linker"
    break
  done
  cmake -S "$ct_tree" -B "$ct_build" -G Ninja -DCMAKE_BUILD_TYPE= \
    "-DCMAKE_CXX_FLAGS=${ORV_MUTATION_FLAGS--O0}" -DORV_STRICT_SOURCES=OFF \
    -DORV_ONLY=src,platform/framework,platform/fake,tests/support,tests/mutation,tests/unit/common,tests/unit/app_info,tests/unit/controller,tests/unit/utils,tests/unit/main,tests/unit/paths \
    "$@" >"$ct_log" 2>&1 || { cat "$ct_log"; exit 2; }
}
