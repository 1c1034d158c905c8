#!/bin/sh
# Runs a test program in a network of its own, so that what it broadcasts reaches nobody. The network has nothing but
# the loopback interface, with three addresses that have a broadcast address. Where that is refused, the program runs
# as it is, and skips.

for options in --net "--net --map-root-user"; do
    # shellcheck disable=SC2086 # two words on purpose
    if unshare $options true 2>/dev/null; then
        exec unshare $options sh -c '
            ip link set lo up &&
                ip address add 127.77.0.1/16 broadcast 127.77.255.255 dev lo &&
                ip address add 127.78.0.1/16 broadcast 127.78.255.255 dev lo
            exec "$@"' sh "$@"
    fi
done
exec "$@"
