#!/bin/sh
# demo.sh KX: takes the sample texts through KX text and back, shows what happens, and fails when a byte differs.
set -eu
kx=$1
texts=$(dirname "$0")/texts
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

cat <<'TELL'
Before Unicode, every language had code pages of its own. KX text holds them all in one: each character
is a 16-bit unit that names a character set and a place in it. The texts here are stored as the machines of
their languages stored them. Each is converted
    to KX text and back          kx convert -f 852 -t kx TEXT | kx convert -f kx -t 852
    to KX text and on to UTF-8   kx convert -f 852 -t kx TEXT | kx convert -f kx -t utf-8
and compared byte by byte: with itself, and with the UTF-8 text that it was made from.

TELL

total=0
faults=0

# same FILE FILE: whether they are equal, in words.
same() {
    if cmp -s "$1" "$2"; then
        echo "same"
    else
        echo "DIFFERENT"
    fi
}

printf '%-20s %9s %9s %9s  %-9s  %-9s  %s\n' "text" "code page" "bytes" "KX units" "and back" "and UTF-8" "first line"
for text in "$texts"/*.txt; do
    name=$(basename "$text" .txt)
    page=${name##*-}
    for result in kx back utf8; do : >"$work/$result"; done
    "$kx" convert -f "$page" -t kx -o "$work/kx" "$text" || true
    "$kx" convert -f kx -t "$page" -o "$work/back" "$work/kx" || true
    "$kx" convert -f kx -t utf-8 -o "$work/utf8" "$work/kx" || true
    back=$(same "$text" "$work/back")
    unicode=$(same "$texts/utf-8/$name.txt" "$work/utf8")
    total=$((total + 1))
    [ "$back $unicode" = "same same" ] || faults=$((faults + 1))
    printf '%-20s %9s %9d %9d  %-9s  %-9s  %s\n' "${name%-*}" "$page" "$(wc -c <"$text")" \
        "$(($(wc -c <"$work/kx") / 2))" "$back" "$unicode" "$(head -n 1 "$work/utf8" | tr -d '\r')"
done

echo
if [ "$total" -eq 0 ]; then
    echo "No texts in $texts."
    exit 1
fi
if [ "$faults" -ne 0 ]; then
    echo "$faults of $total texts did NOT come through whole."
    exit 1
fi
echo "All $total texts came back from KX text byte for byte, and every character has its Unicode value."
cat <<'TELL'

The filters change the letters of a text: their case, the width of East Asian characters, the two kana of
Japanese, the two scripts of Chinese. One line of each text, before and after:

TELL

# change TEXT LINE COMMAND ACTION: the whole text goes through; the line of that number is shown.
change() {
    page=${1##*-}
    "$kx" convert -f "$page" -t utf-8 -o "$work/before" "$texts/$1.txt"
    "$kx" "$3" "$4" -f "$page" -t utf-8 -o "$work/after" "$texts/$1.txt"
    if cmp -s "$work/before" "$work/after"; then
        echo "kx $3 $4 did NOT change $1."
        exit 1
    fi
    printf '    %s\n    %s\n        kx %s %s -f %s -t utf-8 %s\n\n' "$(sed -n "$2p" "$work/before" | tr -d '\r')" \
        "$(sed -n "$2p" "$work/after" | tr -d '\r')" "$3" "$4" "$page" "$1.txt"
}

change russian-866 1 case upper
change japanese-932 '$' width double
change japanese-932 '$' width hiragana
change japanese-932 6 width katakana
change chinese-simplified-936 1 han big5
change chinese-traditional-950 3 han gb

# A title between the codes of attribute 12, and a group that says nothing to us.
title() { head -n 1 "$texts/czech-852.txt"; }
{
    printf '\362\014\362'
    title | "$kx" convert -f 852 -t stream
    printf '\363\014\363'
    printf '\324\001\013\000page\013\000\324'
} >"$work/document"

cat <<'TELL'

Documents hold such text as a stream of bytes with other codes in between. This one was made from the title
of the Czech text; `kx dump` lists it code by code:

TELL
"$kx" dump "$work/document"

"$kx" strip --keep=hard,soft -t 1250 -o "$work/stripped" "$work/document"
"$kx" convert -f stream -t 1250 -o "$work/converted" "$work/document"
title | "$kx" convert -f 852 -t 1250 -o "$work/windows"
echo
printf 'stripped to Windows text (1250), seen as UTF-8:  %s\n' "$("$kx" convert -f 1250 -t utf-8 "$work/stripped")"
if [ "$(same "$work/stripped" "$work/windows") $(same "$work/converted" "$work/windows")" != "same same" ]; then
    echo "The document did NOT give its text back."
    exit 1
fi
echo "Stripped or converted, the document gives the text back that went into it, byte for byte."
echo "Try one yourself: $kx convert -f 932 -t utf-8 examples/texts/japanese-932.txt"
