#!/usr/bin/env bash
# Usage: with-postgres.sh BUILD_DIR COMMAND...
# Runs a command beside a throwaway PostgreSQL 15 server on the loopback address, and stops the server
# afterwards whatever the command did. The command finds the server in KEVRO_TEST_PG
# ("host port database user"); the role logs in over TCP with the password of KEVRO's connection string,
# made by the statements of `kevro-setup --role-sql`.
# Without PostgreSQL 15 on the machine the command runs alone, and the tests that need the server say so.
set -uo pipefail
build=$1
shift
PGBIN=/usr/lib/postgresql/15/bin
if [ ! -x "$PGBIN/pg_ctl" ]; then
    echo "with-postgres: PostgreSQL 15 is not installed; the PostgreSQL tests will be skipped." >&2
    exec "$@"
fi
work=$(mktemp -d /tmp/kevro-pg.XXXXXX)
chmod 755 "$work"
as_owner() { if [ "$(id -u)" -eq 0 ]; then runuser -u postgres -- "$@"; else "$@"; fi; }
[ "$(id -u)" -eq 0 ] && chown postgres "$work"
port=$(python3 -c 'import socket; s=socket.socket(); s.bind(("127.0.0.1", 0)); print(s.getsockname()[1])' 2>/dev/null || echo 54329)
stop() {
    as_owner "$PGBIN/pg_ctl" -D "$work/data" -m immediate stop >/dev/null 2>&1
    rm -rf "$work"
}
trap stop EXIT
as_owner "$PGBIN/initdb" -D "$work/data" --auth-local=trust --auth-host=scram-sha-256 -U postgres -E UTF8 >"$work/initdb.log" 2>&1 || {
    cat "$work/initdb.log" >&2; exit 1; }
as_owner "$PGBIN/pg_ctl" -D "$work/data" -l "$work/server.log" -w -t 60 \
    -o "-c listen_addresses=127.0.0.1 -c port=$port -c unix_socket_directories=$work -c fsync=off" start >/dev/null || {
    cat "$work/server.log" >&2; exit 1; }
"$build/kevro-setup" --postgresql --user kevro --database kevro --role-sql |
    as_owner "$PGBIN/psql" -h "$work" -p "$port" -U postgres -d postgres -q -v ON_ERROR_STOP=1 >/dev/null || exit 1
export KEVRO_TEST_PG="127.0.0.1 $port kevro kevro"
"$@"
