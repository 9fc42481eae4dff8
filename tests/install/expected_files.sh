# Sourced by the install checks: the files an install holds outside the data folder, one a line,
# relative to the prefix and sorted; and the data folder's place. $1 = application id.
px_app_id=$1
px_data=share/pxcallsigns/Norvane
px_icon_sizes="16 22 24 32 48 64 128 256"
px_expected_files() {
    {
        echo bin/pxcallsigns
        if [ -n "${PX_EXPECT_STATIONVIEW:-}" ]; then echo lib/pxcallsigns/pxstationview.so; fi
        echo "share/applications/$px_app_id.desktop"
        echo "share/metainfo/$px_app_id.metainfo.xml"
        echo "share/icons/hicolor/scalable/apps/$px_app_id.svg"
        for n in $px_icon_sizes; do echo "share/icons/hicolor/${n}x$n/apps/$px_app_id.png"; done
    } | LC_ALL=C sort
}
# The files under $1 outside the data folder, in the same form.
px_files_outside_data() {
    (cd "$1" && find . -type f -o -type l) | sed 's|^\./||' | grep -v "^$px_data/" | LC_ALL=C sort
}
fail() { echo "FAIL: $*" >&2; exit 1; }
