#!/bin/sh
# Makes every PNG of this folder from the SVG beside it: X.png at the SVG's own size and X@2x.png at twice
# that size. The application icon is made at the sizes that desktops ask for instead. Run it after editing an
# SVG and commit both; it needs rsvg-convert (Debian package librsvg2-bin).
set -eu

cd "$(dirname "$0")"

render() { # render SVG PNG rsvg-convert-options...
    svg=$1
    png=$2
    shift 2
    rsvg-convert "$@" --output "$png" "$svg"
}

find . -name '*.svg' | sort | while IFS= read -r svg; do
    base=${svg%.svg}
    case $base in
    */vyr)
        for size in 64 128 256; do
            render "$svg" "${base}_$size.png" --width "$size" --height "$size"
        done
        ;;
    */vyr_small) # drawn with fewer lines, which a small icon can still show
        for size in 16 24 32 48; do
            render "$svg" "${base%_small}_$size.png" --width "$size" --height "$size"
        done
        ;;
    *)
        render "$svg" "$base.png"
        render "$svg" "$base@2x.png" --zoom 2
        ;;
    esac
done
