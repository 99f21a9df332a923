# SPDX-License-Identifier: MIT
# shellcheck shell=bash
#
# Packages for another architecture or from another release, fetched without telling this machine's apt and dpkg of
# either. Sourced after common.sh.

# private_apt STATE TOOL [ARGUMENT...]: runs an apt tool with a state of its own in the folder STATE.
private_apt()
{
    local state=$1 tool=$2
    shift 2
    mkdir -p "$state/lists/partial" "$state/cache/archives/partial"
    : >>"$state/status"
    "$tool" -qq -o APT::Sandbox::User= -o Dir::State="$state" -o Dir::State::Lists="$state/lists" \
        -o Dir::State::status="$state/status" -o Dir::Cache="$state/cache" "$@"
}
