Create Table TNOTA_FISCAL (
SERIE varchar (3) not null ,
NUMERO integer  not null ,
COD_CLIENTE varchar (10),
EMISSAO TIMESTAMP ,
TOTAL double Precision ,
CHAVE_ACESSO varchar (44)
 )