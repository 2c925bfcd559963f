# shellcheck shell=bash
# What the scripts that build have in common; to be sourced, with `root` naming the top of the tree.

# With the base folder known, a second clone of the tree finds what the first one compiled.
if [[ -z ${ORV_COMPILER_LAUNCHER+set} ]] && command -v ccache >/dev/null; then
    export ORV_COMPILER_LAUNCHER=ccache
    export CCACHE_BASEDIR=${CCACHE_BASEDIR:-$root} CCACHE_NOHASHDIR=${CCACHE_NOHASHDIR:-1}
    # What a source takes from a precompiled header is known by that header's own contents.
    export CCACHE_SLOPPINESS=${CCACHE_SLOPPINESS:-pch_defines,time_macros}
fi

if [[ $(uname -s) == Darwin ]]; then
    # Homebrew keeps its LLVM out of the search path, for it would hide Apple's compiler.
    llvm=$(brew --prefix 2>/dev/null)/opt/llvm/bin
    clang_format=$llvm/clang-format clang_tidy=$llvm/clang-tidy
else
    clang_format=clang-format-19 clang_tidy=clang-tidy-19
fi
export clang_format clang_tidy

jobs=$(getconf _NPROCESSORS_ONLN)
export jobs

# The build files of a preset; says something only when it fails.
configure() {
    local log=$root/build/$1-configure.log
    mkdir -p "$root/build"
    if ! cmake -S "$root" --preset "$1" >"$log" 2>&1; then
        cat "$log" >&2
        return 1
    fi
}

# Our own files that git knows or would take, by pathspec.
our_files() {
    git -C "$root" ls-files --cached --others --exclude-standard -- "$@" | while read -r file; do
        [[ -e $root/$file ]] && echo "$file"
    done
}
