#!/usr/bin/env bash
# The desktop entry and the AppStream metadata: both validators pass without a remark, and the
# entry, the metadata and the program agree on the id, the command and the version.
# Usage: check_metadata.sh SOURCE_DIR APP_ID VERSION
set -euo pipefail
source "$(dirname "$0")/expected_files.sh" "$2"
packaging=$1/packaging
desktop=$packaging/$px_app_id.desktop
metainfo=$packaging/$px_app_id.metainfo.xml

remarks=$(desktop-file-validate "$desktop" 2>&1) || fail "desktop-file-validate: $remarks"
[ -z "$remarks" ] || fail "desktop-file-validate: $remarks"
appstreamcli validate --no-net "$metainfo" || fail "appstreamcli validate"

entry() { sed -n "s/^$1=//p" "$desktop"; }
[ "$(entry Exec)" = pxcallsigns ] || fail "Exec is '$(entry Exec)'"
[ "$(entry Icon)" = "$px_app_id" ] || fail "Icon is '$(entry Icon)'"
[ "$(entry Type)" = Application ] || fail "Type is '$(entry Type)'"
grep -qx "  <id>$px_app_id</id>" "$metainfo" || fail "metainfo id is not $px_app_id"
grep -qx "  <launchable type=\"desktop-id\">$px_app_id.desktop</launchable>" "$metainfo" || fail "launchable"
# The newest release, listed first, is the version the program reports.
newest=$(grep -m1 -o '<release version="[^"]*"' "$metainfo" | cut -d'"' -f2)
[ "$newest" = "$3" ] || fail "newest release in the metadata is '$newest', the program is $3"
echo "desktop entry and metadata valid, id $px_app_id, version $3"
