# Four dies and three terminals, to be read
# Each line has a name, x and y. A terminal stays where it is put here; the dies are only
# named, as their places are what is looked for
UCLA pl 1.0

cpu 0 0
mem 0 0
radio 0 0
power 0 0
usb 0 2000
antenna 4000 3000
battery 2000 0
