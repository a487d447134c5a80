# The surroundings of a program of the example's load module.
export VELK_MANIFEST_DIR=examples/loadmodules ZBN_NO=CXC1370001 ZBN_NUM=CXC1370001 ZBN_REV=R1A
export SYSTEM_UUID=0b5f7c52-6e0c-4b8e-9a43-2f1d8c7e6a90 COMPUTE_NAME=compute-1
export RUXA_NTF_LOG=$WORK/notifications.jsonl

# Takes away what differs from run to run: of traces all but group, unit and text, times and ages.
steady() {
    sed -E 's/[0-9-]+T[0-9:.]+Z [0-9]+ [0-9]+ dolqctl\.[^ ]+ ([0-9]) ([a-zA-Z]+):[0-9]+ /\1 \2 /
            s/[0-9]{4}-[0-9-]{5}(T[0-9:.]+Z| [0-9:]{8})/TIME/g; s/ [0-9]+s(  |$)/ AGE\1/
            s/thread: [0-9]+/thread: PID/; s/notification(Id:)? [0-9]{5,}/notification\1 ID/; s/after [0-9.]+ ms/after MS/; s;(^|[ "])/[^ "]*/;\1;g'
}
set -o pipefail
