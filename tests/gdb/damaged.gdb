set pagination off
set confirm off
set width 0
set startup-with-shell off
break lookHere
run
set variable table.parts_->rows.slots_ = 8
echo table:\040
print table
set variable *(long*)&loaded.values_ = 8
echo loaded:\040
print loaded
kill
