set pagination off
set confirm off
set width 0
set startup-with-shell off
break lookHere
run
echo loaded:\040
print loaded
echo patched:\040
print patched
echo own:\040
print own
echo table:\040
print table
echo view:\040
print view
echo upper:\040
print upper
echo fields:\040
print fields
set print elements 2
echo short:\040
print table
set print elements 200
up
echo text:\040
print text
echo none:\040
print none
echo wide:\040
print wide
echo nothing:\040
print nothing
echo shared:\040
print share
kill
