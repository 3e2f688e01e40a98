#!/usr/bin/env bash
# The libraries of the Windows build, static, from Debian's own source packages: libzip (a minute) and Qt 6 base (50
# CPU minutes: half an hour on two idle cores). They are kept outside the tree and built once: what is there is left
# alone, and an interrupted build goes on where it stopped. WKD_WINDOWS names another folder than
# ~/.cache/atualizawkd-windows, WKD_NUCLEOS another number of jobs than the machine's cores.
# scripts/windows-bibliotecas.sh --sem-qt builds libzip alone. The folder's name is printed last.
set -euo pipefail
cd "$(dirname "$0")/.."

destino=${WKD_WINDOWS:-${XDG_CACHE_HOME:-$HOME/.cache}/atualizawkd-windows}
nucleos=${WKD_NUCLEOS:-$(nproc)}
mkdir -p "$destino"
destino=$(cd "$destino" && pwd)
pedidas=(libzip qt6-base)
[ "${1:-}" != --sem-qt ] || pedidas=(libzip)

# Debian's source packages come from where the binary ones come from; the machine's own lists stay as they are.
busca_fonte() { # package
    local listas=$destino/apt
    [ ! -d "$destino/fontes/$1" ] || return 0
    mkdir -p "$listas/listas/partial" "$destino/baixados"
    apt-get indextargets --format 'deb-src $(REPO_URI) $(RELEASE) $(COMPONENT)' \
        'Created-By: Packages' 'Origin: Debian' | sort -u >"$listas/sources.list"
    local apt=(-q -o "Dir::Etc::sourcelist=$listas/sources.list" -o Dir::Etc::sourceparts=- \
        -o "Dir::State::lists=$listas/listas" -o APT::Sandbox::User=root)
    apt-get "${apt[@]}" update
    (cd "$destino/baixados" && apt-get "${apt[@]}" --download-only source "$1")
    mkdir -p "$destino/fontes"
    rm -rf "$destino/fontes/$1.parcial"
    dpkg-source -x "$destino/baixados/$1"_*.dsc "$destino/fontes/$1.parcial"
    mv "$destino/fontes/$1.parcial" "$destino/fontes/$1"
}

constroi() { # package cmake-option...
    local pacote=$1 inicio=$SECONDS
    shift
    [ ! -e "$destino/.pronto-$pacote" ] || return 0
    busca_fonte "$pacote"
    local obra=$destino/obra/$pacote
    cmake -S "$destino/fontes/$pacote" -B "$obra" -G Ninja --toolchain "$ferramentas" -DWKD_WINDOWS="$destino" \
        -DCMAKE_INSTALL_PREFIX="$destino" -DCMAKE_BUILD_TYPE=MinSizeRel -DBUILD_SHARED_LIBS=OFF "$@"
    cmake --build "$obra" --parallel "$nucleos"
    cmake --install "$obra" >"$obra/instalacao.log"
    rm -rf "$obra"
    touch "$destino/.pronto-$pacote"
    echo "$pacote: $(((SECONDS - inicio + 59) / 60)) minutos"
}

desligado() { # name...: -Dname=OFF
    printf -- '-D%s=OFF\n' "$@"
}

libzip() {
    constroi libzip $(desligado ENABLE_{COMMONCRYPTO,GNUTLS,MBEDTLS,OPENSSL,WINDOWS_CRYPTO,BZIP2,LZMA,ZSTD}) \
        $(desligado BUILD_{TOOLS,REGRESS,EXAMPLES,DOC})
}

qt6-base() {
    # Of Qt the window's part and the network's; TLS is the system's own. The DirectWrite fonts fail to link without Direct2D.
    constroi qt6-base -DINPUT_opengl=no -DINPUT_openssl=no -DFEATURE_schannel=ON -DQT_BUILD_TOOLS_WHEN_CROSSCOMPILING=OFF \
        $(desligado QT_BUILD_{EXAMPLES,TESTS}) \
        $(desligado FEATURE_{vulkan,sql,dbus,testlib,printsupport,concurrent,xml,direct2d,directwrite3,tabletevent,pkg_config})
}

for biblioteca in "${pedidas[@]}"; do
    [ ! -e "$destino/.pronto-$biblioteca" ] || continue
    exec 9>"$destino/.trava"
    flock 9  # one build at a time; whoever waited finds it done
    # A build that another checkout goes on with must not look for the file in the first one.
    ferramentas=$destino/windows-toolchain.cmake
    cmp -s cmake/windows-toolchain.cmake "$ferramentas" || cp cmake/windows-toolchain.cmake "$ferramentas"
    [ "$biblioteca" != qt6-base ] ||
        echo "Construindo o Qt em $destino: cerca de meia hora em dois núcleos livres, uma só vez." >&2
    "$biblioteca" >&2
done
echo "$destino"
