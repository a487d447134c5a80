# A program of the example's load module whose node can be changed, and what an operator asks.
WORK=$(mktemp -d "$WORK/XXXXXX")
. tests/tools/files/client.sh
cp -r examples/loadmodules "$WORK/node"
export VELK_MANIFEST_DIR=$WORK/node
node=$VELK_MANIFEST_DIR
equipment=$node/alarm-client/equipment.xml

explained() { # [FAULT] [OBJECT]: the verdict
    dolqctl explain --fault "${1:-4101}" --object "${2:-Board=3}" 2>/dev/null | tail -n 1 | steady
}
doctored() { dolqctl doctor 2>/dev/null | grep -A1 ^failed | steady; }

# Starts a program that waits in the sending of an alarm, in an environment of its own:
# [VARIABLE=VALUE]... Sets `program`.
started() {
    env -i PATH="$PATH" RUXA_NTF_LOG="$WORK/log" RUXA_NTF_FAULTS=send:OK,delay=60000 "$@" \
        dolqctl cease --object Board=3 --fault 4101 >/dev/null 2>&1 &
    program=$!
    trap 'kill -KILL $program' EXIT
    for _ in {1..100}; do
        grep -q libSaNtf /proc/$program/maps && break
        sleep 0.1
    done
    sleep 0.2 # what it loads behind it
}
