Create Table BTCLI(
CODIGO integer  not null ,
NOME varchar (40),
FANTASIA varchar (30),
CIDADE varchar (30),
UF varchar (2),
DATA TIMESTAMP ,
VALOR double Precision ,
LIMITE double Precision ,
ATIVO integer ,
VENDEDOR integer ,
OBS varchar (60),
FOTO BLOB SUB_TYPE 0 SEGMENT SIZE 80 
 )