# A program of the example's load module whose node can be changed, and what an operator asks.
WORK=$(mktemp -d "$WORK/XXXXXX")
. tests/tools/files/client.sh
cp -r examples/loadmodules "$WORK/node"
export VELK_MANIFEST_DIR=$WORK/node
node=$VELK_MANIFEST_DIR
equipment=$node/alarm-client/equipment.xml

explained() { # [FAULT] [OBJECT]
    local code=0
    dolqctl explain --fault "${1:-4101}" --object "${2:-Board=3}" 2>"$WORK/errors" | head -n 1 |
        steady || code=$?
    sed "s#$node/##g" "$WORK/errors" >&2
    return "$code"
}
doctored() { dolqctl doctor | head -n 1 | steady; }
