# Runs on the board machine: how long it took to start, what a console at the prompt keeps in memory, whether a
# rediscovery reaches the kernel's file, and how soon an event is printed.
read -r started _ </kernel/proc/uptime
echo "seconds since power-on: $started"

gfast-cli >/tmp/terminal &
console=$!
until grep -q Listening /tmp/terminal; do usleep 20000; done
mkfifo /tmp/keys
telnet 127.0.0.1 9000 </tmp/keys >/tmp/session &
exec 5>/tmp/keys
until grep -q '(gfast-cli)> ' /tmp/session; do usleep 20000; done
sleep 1
echo "gfast-cli at the prompt:"
grep -E 'VmRSS|RssAnon|RssShmem' "/kernel/proc/$console/status"
printf 'rediscover\r\n' >&5
until [ -e /tmp/rediscover ]; do usleep 20000; done
echo "rediscover: $(cat /tmp/rediscover)"
exec 5>&-
kill $console
wait $console 2>/dev/null

./event-bench gfast-cli
