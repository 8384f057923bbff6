UCLA pl 1.0
small 0 0
large 0 0
