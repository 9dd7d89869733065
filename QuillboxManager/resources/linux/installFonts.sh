#!/bin/sh
# installFonts.sh RESOURCES
# Installs the font that is kept among the application's resources, if there is one, for this user. The system notices
# fonts in this folder by itself; refreshing its cache only makes that quicker.
font=${1-}/SourceHanSansSC/SourceHanSansSC-Normal.otf
[ -f "$font" ] || exit 0
case ${XDG_DATA_HOME:-} in
/*) fonts=$XDG_DATA_HOME/fonts ;;
*) fonts=$HOME/.local/share/fonts ;;
esac
mkdir -p -- "$fonts" || exit 1
new=$(mktemp -- "$fonts/.quillbox-XXXXXX") || exit 1
if ! cp -- "$font" "$new" || ! chmod 0644 "$new" || ! mv -f -- "$new" "$fonts/${font##*/}"; then
    rm -f -- "$new"
    exit 1
fi
if command -v fc-cache >/dev/null 2>&1; then
    fc-cache -f "$fonts" >/dev/null 2>&1
fi
exit 0
