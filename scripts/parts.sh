# Sourced by scripts that do their work in parts: what each part took is told in a table at the end. A script that such
# a script starts adds its parts to the same table.
if [[ -z ${VELK_PARTS:-} ]]; then
    VELK_PARTS=$(mktemp)
    export VELK_PARTS
    parts_are_mine=1
fi
part_name=

part() { # NAME COMMAND [WORD...]
    part_name=$1
    part_begun=$SECONDS
    shift
    echo "== $part_name"
    "$@"
    printf '%s\t%d\n' "$part_name" $((SECONDS - part_begun)) >>"$VELK_PARTS"
    part_name=
}

end_of_parts() {
    [[ -z $part_name ]] || printf '%s, failed\t%d\n' "$part_name" $((SECONDS - part_begun)) >>"$VELK_PARTS"
    [[ -n ${parts_are_mine:-} ]] || return 0
    echo
    awk -F '\t' '{ printf "%-40s %6d s\n", $1, $2; sum += $2 } END { printf "%-40s %6d s\n", "together", sum }' "$VELK_PARTS"
    rm -f "$VELK_PARTS"
}
trap end_of_parts EXIT
