# Platforms whose libSaNtf.so.0 cannot be loaded, a folder each in $WORK: the double, broken.
. tests/tools/files/client.sh
export DOUBLE=packed
double=$NTF_DOUBLE/libSaNtf.so.0
mkdir "$WORK"/{missing,undefined,foreign,cut}
sed 's/saNtfFinalize/saNtfFinalizE/g' "$double" >"$WORK/undefined/libSaNtf.so.0"
{ head -c 5 "$double" && printf '\2' && tail -c +7 "$double"; } >"$WORK/foreign/libSaNtf.so.0" # big-endian
head -c 4200 "$double" >"$WORK/cut/libSaNtf.so.0"

# Where there is none: program and library look in another folder than the one it was built in.
library=$(dolqctl --version | sed -nE 's/^library: (.*)/\1/p')
for file in "$(type -P dolqctl)" "$library"; do
    sed 's|/platform/ntf|/platform/n/a|g' "$file" >"$WORK/missing/${file##*/}"
done
chmod +x "$WORK/missing/dolqctl"
