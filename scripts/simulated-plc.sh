# shellcheck shell=bash disable=SC2034 # the variables are for the script that sources this file
# The simulated PLC for scripts: source this file.
#
#   start_plc PROGRAM WORK [FLAG...]    PROGRAM is the tool `velk`; sets plc_port. The other plc_... are always set.
#   read_with_tool PROGRAM              reads plc_address with the tool
#   stop_plc                            may be called at any time

plc_address='1?PLC_PRG/Counter?M?0?int'
plc_value=1234567 # as tools/demo/program-1.toml has it
plc_settings=(model=Motorola BlockSize=1024 Timeout=5000)
plc_pid=
plc_port=

start_plc() {
    local program=$1 work=$2 left=200
    shift 2
    plc_port=$work/plc
    "$program" plc tools/demo/line.toml --link "$plc_port" "$@" >"$work/plc.log" 2>&1 &
    plc_pid=$!
    until [[ -e $plc_port ]]; do
        if ! kill -0 "$plc_pid" 2>/dev/null || ((--left == 0)); then
            echo "the simulated PLC did not start:" >&2
            cat "$work/plc.log" >&2
            return 1
        fi
        sleep 0.05
    done
}

read_with_tool() {
    "$1" read --port "$plc_port" --framing bare --node 1 --byte-order big --block-size 1024 --storage storage PLC_PRG.Counter
}

stop_plc() {
    [[ -n $plc_pid ]] || return 0
    kill "$plc_pid" 2>/dev/null || true
    wait "$plc_pid" 2>/dev/null || true
    plc_pid=
}
