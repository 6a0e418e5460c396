#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Decodes all recordings of a folder as a job array of Slurm, into one archive.
set -euo pipefail

usage() {
    cat <<'TEXT'
Usage: morsehost-cluster.sh [OPTION…] --archive URL FOLDER [-- OPTION OF 'morsehost decode'…]

Decodes all recordings of FOLDER (WAV, FLAC, Ogg, MP3) as a job array of Slurm, and archives each
of them once, however often it is tried: a task whose node dies is put back into the queue.

Options:
  --archive URL     postgresql://USER@HOST/DATABASE; a file only where all nodes are this machine
  --partition NAME  where the tasks run (default: that of the cluster)
  --most N          tasks that run at once (default: as many as there is room for)
  --state DIR       where list and logs are kept, a folder of no other submission (default: a new
                    one in morsehost-cluster in the current folder)
  --wait            return when all is done, with status 0 when every recording was archived
  --help            show this help
TEXT
}

fail() {
    echo "morsehost-cluster: $1 (see 'morsehost-cluster --help')" >&2
    exit 2
}

archive=
partition=
most=
state=$PWD/morsehost-cluster/$(date -u +%Y%m%d_%H%M%SZ)-$$
waits=
while [ $# -gt 0 ]; do
    case $1 in
    --archive | --partition | --most | --state)
        [ $# -gt 1 ] || fail "$1 takes a value"
        declare "${1#--}=$2"
        shift 2
        ;;
    --wait) waits=--wait && shift ;;
    --help) usage && exit 0 ;;
    -*) fail "no option '$1'" ;;
    *) break ;;
    esac
done
[ -n "$archive" ] || fail "--archive URL is missing"
[ $# -gt 0 ] || fail "FOLDER is missing"
folder=$1
shift
[ $# -eq 0 ] || [ "$1" = -- ] || fail "what follows FOLDER stands behind --"
[ $# -eq 0 ] || shift
[ -d "$folder" ] || fail "$folder: no such folder"
[[ -z $most || $most =~ ^[1-9][0-9]*$ ]] || fail "--most takes a number, not '$most'"
case $archive in
postgresql://*) ;;
*)
    archive=$(realpath -m "${archive#sqlite:}")
    place=$(dirname "$archive")
    [ -d "$place" ] || fail "$place: no such folder"
    # Writers in a file share memory, which those of several machines cannot.
    case $(stat --file-system --format %T "$place") in
    nfs* | cifs | smb* | afs | ceph | lustre | gpfs | fuse* | 9p | v9fs | ocfs2 | gfs*)
        fail "$archive: several machines cannot write to a file; use postgresql://"
        ;;
    esac
    echo "morsehost-cluster: an archive in a file is for one machine alone; for more use postgresql://" >&2
    ;;
esac

[ ! -e "$state/task.sh" ] || fail "$state: belongs to another submission"
mkdir -p "$state/logs"
state=$(realpath "$state")
# Names end in NUL: they may hold anything else.
find "$(realpath "$folder")" -type f \
    \( -iname '*.wav' -o -iname '*.flac' -o -iname '*.ogg' -o -iname '*.mp3' \) -print0 |
    sort -z >"$state/recordings"
count=$(tr -cd '\0' <"$state/recordings" | wc -c)
[ "$count" -gt 0 ] || fail "$folder holds no recording"

# A cluster bounds the length of an array; a task takes every so many recordings then.
longest=$(scontrol show config | sed -n 's/^MaxArraySize *= *//p')
tasks=$((count < longest - 1 ? count : longest - 1))

{
    printf '#!/usr/bin/env bash\n'
    declare -p count tasks state archive
    printf 'options=(%s)\n' "${*@Q}"
    printf 'program=%q\n' "$(command -v morsehost)"
    cat <<'TASK'
mapfile -d '' -t recordings <"$state/recordings"
status=0
for ((i = SLURM_ARRAY_TASK_ID; i < count; i += tasks)); do
    # A database may be away for a moment.
    for pause in 5 30 0; do
        "$program" decode --archive "$archive" --start auto "${options[@]}" "${recordings[i]}" \
            >/dev/null && break
        [ $pause -gt 0 ] || { echo "not archived: ${recordings[i]}" >&2 && status=1; }
        sleep $pause
    done
done
exit $status
TASK
} >"$state/task.sh"

sbatch --job-name morsehost --array "0-$((tasks - 1))${most:+%$most}" --requeue --open-mode append \
    --output "$state/logs/%a.log" ${partition:+--partition "$partition"} $waits "$state/task.sh"
