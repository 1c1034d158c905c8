#!/usr/bin/env bash
# Fails on an include that runs up, naming file, line and both rooms. A room is a folder of qdcore/, or qdwidgets/, qdfax/
# or qdsim/; it may include itself and rooms on the floors below it, not others on its own floor or above.
#
# Usage: tests/floors.sh [FOLDER]     FOLDER holds the four, by default the folder above this script's.
set -euo pipefail
cd "${1:-$(dirname "$0")/..}"

floors='
7 qdfax
6 servers outlook
5 sync
4 tasks
3 records store
2 contacts captures
1 core
0 qdwidgets'
# The simulator shares no code with the rest: it includes no room, and no room includes it.
apart='qdsim'

# The exceptions: a file, and the header above it that it includes. One that is no longer needed is an error too.
server_of_a_task='a request asks its server for address, login and access manager'
exceptions="
qdcore/tasks/servicerequest_p.cpp faxserver.h $server_of_a_task
qdcore/tasks/task.cpp faxserver.h $server_of_a_task
qdcore/tasks/taskchangecontact.cpp faxserver.h $server_of_a_task
qdcore/tasks/taskgetcontacts.cpp faxserver.h $server_of_a_task
qdcore/tasks/taskgetcontactsoids.cpp faxserver.h $server_of_a_task
qdcore/tasks/taskschedule.cpp faxserver.h a fax carries the sender its server knows
qdcore/sync/quendracontactprovider.cpp faxserver.h asks its server for the tasks that read and change a book
qdcore/sync/contactmanager.cpp outlookcontactprovider.h makes the providers of every kind"

find qdcore qdwidgets qdfax qdsim -name '*.h' -o -name '*.cpp' -o -name '*.h.in' | LC_ALL=C sort |
  FLOORS=$floors APART=$apart EXCEPTIONS=$exceptions awk '
    function room_of(path, part) {
      split(path, part, "/")
      return part[1] == "qdcore" ? part[2] : part[1]
    }
    function complain(text) {
      print text
      failed = 1
    }
    BEGIN {
      lines = split(ENVIRON["FLOORS"], line, "\n")
      for (i = 1; i <= lines; ++i) {
        rooms = split(line[i], room, " ")
        for (j = 2; j <= rooms; ++j)
          floor[room[j]] = room[1]
      }
      apart = ENVIRON["APART"]
      lines = split(ENVIRON["EXCEPTIONS"], line, "\n")
      for (i = 1; i <= lines; ++i) {
        if (split(line[i], field, " ") > 2)
          unused[field[1] " " field[2]] = 1
      }
    }
    {
      file[NR] = $0
      name = $0
      sub(/.*\//, "", name)
      sub(/\.in$/, "", name)
      if (name !~ /\.h$/)
        next
      if (name in home)
        complain($0 ": " home[name] " has a header of that name too")
      home[name] = room_of($0)
    }
    END {
      for (i = 1; i <= NR; ++i) {
        from = room_of(file[i])
        if (!(from in floor) && from != apart)
          complain(file[i] ": the room " from " is on no floor")
        for (number = 1; (getline text <file[i]) > 0; ++number) {
          if (text !~ /^[ \t]*#[ \t]*include[ \t]*["<]/)
            continue
          header = text
          gsub(/^[^"<]*["<]|[">].*$|[^">]*\//, "", header)
          if (!(header in home)) # of Qt or the system, or made while building
            continue
          to = home[header]
          if (to == from || (to != apart && from != apart && floor[to] < floor[from]))
            continue
          if ((file[i] " " header) in excepted || (file[i] " " header) in unused) {
            excepted[file[i] " " header] = 1
            delete unused[file[i] " " header]
            continue
          }
          complain(file[i] ":" number ": " from " includes " header " of " to)
        }
        close(file[i])
        ++read
      }
      for (one in unused)
        complain(one ": an exception that is not needed")
      if (!read)
        complain("There is nothing to read")
      exit failed
    }'
