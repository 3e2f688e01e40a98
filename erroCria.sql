Create Table tcli (

 )