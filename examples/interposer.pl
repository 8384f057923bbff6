# Two processors, three memory stacks and an I/O die
UCLA pl 1.0

cpu0 0 0
cpu1 0 0
mem0 0 0
mem1 0 0
mem2 0 0
io 0 0
pad0 4000 0
pad1 6000 0
pad2 8000 0
pad3 10000 0
pad4 12000 0
pad5 14000 0
pad6 16000 0
pad7 18000 0
pad8 0 6000
pad9 0 12000
pad10 22000 6000
pad11 22000 12000
