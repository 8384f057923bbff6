# Five dies that are connected with each other only
UCLA pl 1.0

logic 0 0
cache 0 0
analog 0 0
flash 0 0
sensor 0 0
