#!/bin/sh
# usage: conformance.sh PROGRAM
# Compares the program with recorded runs where the environment says that there are some.
if [ -z "${KORVEL_CONFORMANCE:-}" ]; then
    echo "Skipped: set KORVEL_CONFORMANCE to the folder of the recorded runs to compare with them."
    exit 77
fi
exec "$KORVEL_CONFORMANCE/check" "$1"
