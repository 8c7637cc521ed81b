#!/usr/bin/env bash
# check_recipes.sh PYTHON SOURCE-FOLDER: runs the recipes of docs/cluster.md as they stand, except that
# /share is a folder of samples. Machines and Slurm are stand-ins: ssh runs its command in a mount
# namespace of its own, sbatch runs the jobs of an array.
set -euo pipefail
source=$2
fail() { printf '%s\n' "$*" >&2; exit 1; }
"$source/scripts/make-samples.sh" "$KOLUM_SAMPLES" >/dev/null
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cd "$folder"
mkdir bin share
cp -r "$KOLUM_SAMPLES/Music" "$KOLUM_SAMPLES/Photos" share
cp share/Photos/bars.png share/Photos/$'two\nlines.png'
ln -s "$KOLUM_TOOL" bin/kolum
cat >bin/ssh <<'EOF'
#!/bin/bash
# Each machine sees the share at its place, and nothing where the others have theirs.
host=$1; shift
echo "$host" >>hosts
mkdir -p "mount-of-$host"
exec unshare --map-root-user --mount bash -c 'mount --bind share "mount-of-$0" && mount --bind "mount-of-$0" share && "$@"' "$host" "$@"
EOF
cat >bin/sbatch <<'EOF'
#!/bin/bash
[ "$1" = --wait ] && [[ $2 =~ ^--array=0-([0-9]+)$ ]] || exit 2
for ((job = 0; job <= BASH_REMATCH[1]; ++job)); do SLURM_ARRAY_TASK_ID=$job bash "$3" || true; done
EOF
chmod +x bin/ssh bin/sbatch
export PATH=$folder/bin:$PATH

# recipe HEADING N: the Nth block of code below a heading.
recipe() {
  awk -v heading="### $1" -v wanted="$2" '
    /^##/ { on = $0 == heading; block = 0; inside = 0; next }
    on && /^    / { if (!inside) ++block; inside = 1; if (block == wanted) print substr($0, 5); next }
    { inside = 0 }' "$source/docs/cluster.md" | sed "s,/share,$folder/share,g; s,--lines=1000,--lines=3,"
}

content() { kolum library export --json --library "$1" | jq -c 'del(.size, .modified)' | sort; }

kolum scan --library local.db share >/dev/null 2>&1
[ "$(content local.db | wc -l)" -ge 7 ] || fail "the scan found too little"

try() {
  local name=$1
  rm -f media.db media.db.*
  recipe "$name" 1 >recipe.sh
  [ -s recipe.sh ] || fail "docs/cluster.md has no recipe for $name"
  bash -euo pipefail recipe.sh >out 2>&1 || fail "$name: $(cat out)"
  [ "$(content media.db)" = "$(content local.db)" ] || fail "$name: another library: $(cat out)"
  [ -z "$(kolum library stale --library media.db share)" ] || fail "$name: something is left"
}

try "GNU parallel"
try "ssh"
[ "$(sort hosts | tr '\n' ' ')" = "node1 node2 " ] || fail "ssh: $(cat hosts)"
[ -s node1.json ] && [ -s node2.json ] || fail "ssh: a machine had nothing to do"
recipe "Slurm" 2 >describe.sh
try "Slurm"
[ "$(ls answers-* | wc -l)" -ge 3 ] || fail "Slurm: too few jobs"
