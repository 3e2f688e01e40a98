#include "CorrecoesLista.h"

namespace wkd {

namespace {

constexpr TTextoPorTipo Todos(std::string_view texto) { return {texto, texto}; }

// Odd texts included, each stays as it was released: what has run is known by its name alone.

constexpr TCorrecao kAnteriores[] = {
    {"Antes_up401G_1", Todos("ALTER TABLE TMAQUINA_ANEXOS DROP CONSTRAINT PK_TMAQUINA_ANEXOS;")},
    {"Antes_up401G_2",
     Todos("update satrib set chave_de_pesquisa = 1 where arquivo = 'TMAQUINA_ANEXOS' and sequencia = 3;")},
    {"Antes_up401G_3",
     {"ALTER TABLE tmaquina_anexos ALTER COLUMN CODIGO integer NOT NULL;",
      "ALTER TABLE tmaquina_anexos ALTER COLUMN CODIGO TYPE integer;"}},
    {"Antes_up401G_4",
     {"ALTER TABLE TMAQUINA_ANEXOS ADD  CONSTRAINT PK_TMAQUINA_ANEXOS PRIMARY KEY CLUSTERED ([COD_EMPRESA] "
      "ASC,[COD_MAQUINA] ASC,[CODIGO] ASC);",
      ""}},
    {"Antes_up401G_4.1", {"", "ALTER TABLE TMAQUINA_ANEXOS DROP CONSTRAINT PK_TMAQUINA_ANEXOS;"}},
    {"Antes_up401G_4.2",
     {"",
      "ALTER TABLE TMAQUINA_ANEXOS ADD CONSTRAINT PK_TMAQUINA_ANEXOS PRIMARY KEY (COD_EMPRESA,COD_MAQUINA,CODIGO);"}},
};

/// COD_RELACIONA of two tables becomes a text of 11 characters.
constexpr TTextoPorTipo kPassosCodReceber[] = {
    {"drop   index TCRTLCHQ_CODIGO on TCRTLCHQ", "drop   index TCRTLCHQ_CODIGO;"},
    Todos("alter  table TCRTLCHQ drop CONSTRAINT PK_TCRTLCHQ"),
    {"alter  table TCRTLCHQ alter column cod_relaciona nvarchar(11) not null;",
     "alter  table TCRTLCHQ alter column cod_relaciona type varchar(11);"},
    {"create NONCLUSTERED INDEX TCRTLCHQ_CODIGO on TCRTLCHQ (COD_EMPRESA ASC, COD_RELACIONA ASC, TIPO ASC) WITH "
     "(PAD_INDEX = OFF, STATISTICS_NORECOMPUTE = OFF, SORT_IN_TEMPDB = OFF, DROP_EXISTING = OFF, ONLINE = OFF, "
     "ALLOW_ROW_LOCKS = ON, ALLOW_PAGE_LOCKS = ON) on [PRIMARY]",
     "drop INDEX TCRTLCHQ_CODIGO;"},
    {"", "create INDEX TCRTLCHQ_CODIGO on TCRTLCHQ (COD_EMPRESA, COD_RELACIONA, TIPO);"},
    {"alter table TCRTLCHQ add CONSTRAINT PK_TCRTLCHQ PRIMARY KEY CLUSTERED (COD_EMPRESA ASC, COD_RELACIONA ASC, AUT_ "
     "ASC)WITH (PAD_INDEX = OFF, STATISTICS_NORECOMPUTE = OFF, SORT_IN_TEMPDB = OFF,  IGNORE_DUP_KEY = OFF, ONLINE = "
     "OFF, ALLOW_ROW_LOCKS = ON, ALLOW_PAGE_LOCKS = ON) ON [PRIMARY]",
     "alter table TCRTLCHQ drop CONSTRAINT PK_TCRTLCHQ;"},
    {"", "alter table TCRTLCHQ add CONSTRAINT PK_TCRTLCHQ PRIMARY KEY (COD_EMPRESA, COD_RELACIONA, AUT_);"},
    Todos("update SATRIB set tipo = 'ftString', tamanho = 11 where arquivo = 'TCRTLCHQ' and nome = 'COD_RELACIONA'"),
    Todos("alter  TABLE TCHQCANC DROP CONSTRAINT PK_TCHQCANC"),
    {"alter  table TCHQCANC alter column cod_relaciona nvarchar(11) not null",
     "alter  table TCHQCANC alter column cod_relaciona type varchar(11);"},
    {"alter  TABLE TCHQCANC ADD  CONSTRAINT PK_TCHQCANC PRIMARY KEY CLUSTERED (COD_EMPRESA ASC, COD_RELACIONA ASC, "
     "AUT_ ASC)WITH  (PAD_INDEX = OFF, STATISTICS_NORECOMPUTE = OFF, SORT_IN_TEMPDB = OFF, IGNORE_DUP_KEY = OFF, "
     "ONLINE = OFF, ALLOW_ROW_LOCKS = ON, ALLOW_PAGE_LOCKS = ON) ON [PRIMARY]",
     "alter  TABLE TCHQCANC drop CONSTRAINT PK_TCHQCANC;"},
    {"", "alter  TABLE TCHQCANC ADD  CONSTRAINT PK_TCHQCANC PRIMARY KEY (COD_EMPRESA, COD_RELACIONA, AUT_);"},
    Todos("update SATRIB set tipo = 'ftString', tamanho = 11 where arquivo = 'TCHQCANC' and nome = 'COD_RELACIONA'"),
};

constexpr TCorrecao kPosteriores[] = {
    {"QueryTipoProduto1", Todos("delete from satrib  where arquivo = 'tproduto' and  nome  = 'tipo_produto';")},
    {"QueryTipoProduto2", Todos("delete from slookup where arquivo = 'tproduto' and  campo = 'tipo_produto';")},
    {"TipoHora1",
     {"ALTER TABLE TORCAMENTO_ITENS ADD TIPO_DE_HORA nvarchar(40);",
      "ALTER TABLE TORCAMENTO_ITENS ADD TIPO_DE_HORA varchar(40);"}},
    {"TipoHora2",
     {"ALTER TABLE TOS_AUX ADD TIPO_DE_HORA nvarchar(40);", "ALTER TABLE TOS_AUX ADD TIPO_DE_HORA varchar(40);"}},
    {"TipoHora3",
     {"ALTER TABLE TORCAMENTO ADD FORMA_DE_PAGAMENTO nvarchar(40);",
      "ALTER TABLE TORCAMENTO ADD FORMA_DE_PAGAMENTO varchar(40);"}},
    {"TipoHora4",
     Todos("update satrib set nome='TIPO_DE_HORA' where NOME='TIPO DE HORA' and ARQUIVO='TORCAMENTO_ITENS';")},
    {"TipoHora5",
     Todos("update satrib set nome='FORMA_DE_PAGAMENTO' where NOME='FORMA DE PAGAMENTO' and ARQUIVO='TORCAMENTO';")},
    {"TipoHora6", Todos("update satrib set nome='TIPO_DE_HORA' where NOME='TIPO DE HORA' and ARQUIVO='TOS_AUX';")},
    {"CodigoFabrica",
     {"alter table TCOM_AUX alter column CODIGO_NA_FABRICA nvarchar(60);",
      "alter table TCOM_AUX alter column CODIGO_NA_FABRICA varchar(60);"}},
    {"PlanoContas1", Todos("delete from satrib where arquivo = 'TTMP_PLAN_REC'")},
    {"PlanoContas2", Todos("delete from satrib where arquivo = 'TR87_FILTRO_AUX'")},
    {"PlanoContas3", Todos("delete from satrib where arquivo = 'RX1_TMP'")},
    {"PlanoContas4", Todos("delete from satrib where arquivo = 'TPREV_HS'")},
    {"CFOP", Todos("delete from satrib where arquivo = 'TTP_VEND'")},
    {"MetodoReposicao1", Todos("delete from satrib where arquivo = 'CADCLI'")},
    {"MetodoReposicao2", Todos("delete from satrib where arquivo = 'TENT_PAX'")},
    {"MetodoReposicao3", Todos("delete from satrib where arquivo = 'TETIQ_NF'")},
    {"MetodoReposicao4", Todos("delete from satrib where arquivo = 'TORD_PRO'")},
    {"MetodoReposicao5", Todos("delete from satrib where arquivo = 'TPRO_AUX'")},
    {"TComAuxQtdeEstoque", Todos(" update tcom_aux "
                                 " set qtde_estoque = (select sum(qtde) from tcom_aux_os "
                                 "                    where tcom_aux_os.cod_empresa = tcom_aux.cod_empresa and "
                                 "                          tcom_aux_os.cod_compra = tcom_aux.REALCIONA_AUTO and "
                                 "                          tcom_aux_os.cod_produto = tcom_aux.cod_produto and "
                                 "                          tcom_aux_os.COD_COM_AUX = tcom_aux.aut_) "
                                 " where qtde_estoque <> (select sum(qtde) from tcom_aux_os "
                                 "                    where tcom_aux_os.cod_empresa = tcom_aux.cod_empresa and "
                                 "                          tcom_aux_os.cod_compra = tcom_aux.REALCIONA_AUTO and "
                                 "                          tcom_aux_os.cod_produto = tcom_aux.cod_produto and "
                                 "                          tcom_aux_os.COD_COM_AUX = tcom_aux.aut_) ")},
    {"AjustaCodReceber", {}, false, kPassosCodReceber},
    {"Up400K_1",
     {"ALTER TABLE tretorno_instru_rastreio alter column QTDE_SAIDA float;",
      "ALTER TABLE tretorno_instru_rastreio alter column QTDE_SAIDA type float;"}},
    {"Up400K_2",
     {"alter table TRETORNO_FERRA_RASTREIO alter column qtde_SAIDA FLOAT;",
      "alter table TRETORNO_FERRA_RASTREIO alter column qtde_SAIDA type FLOAT;"}},
    {"Up401A_1", Todos("update CSENHA set USAR_PRG_EMAIL_PADRAO = 1 where USAR_PRG_EMAIL_PADRAO = 4;")},
    {"Up401C_1",
     Todos("UPDATE TSOL_MAX_OS SET numero_orcamento= A2.n_orcamento FROM TSOL_MAX_OS A1 INNER JOIN Torcamento A2 ON "
           "(A1.cod_os = A2.codigo) WHERE A1.COD_EMPRESA = A2.COD_EMPRESA and a1.modulo_origem = 'P88';")},
    {"Up401G_1", Todos("UPDATE TNATU_OP SET INFORMAR_PLANO_CONTAS_SAI = 1 WHERE TIPO = 'S'")},
    {"Up401I_1",
     Todos("UPDATE TSAIDA_E SET COD_FUNC_RETIROU = ( SELECT TOP 1 COD_FUNCION_SAIDA_AUTO_PA FROM TCFG_SER ) "
           "WHERE(COD_FUNC_RETIROU = '' OR COD_FUNC_RETIROU IS NULL);"),
     true},
    {"Up401I_2", Todos("UPDATE TSAIDA_E SET IDENTIFICACAO_FUNCIONARIO = COD_FUNC_RETIROU WHERE SAIDA_PRODUTO_ACABADO = "
                       "0 AND (N_OS = '' OR N_OS IS NULL);")},
    {"Up401I_3", Todos("UPDATE TSAIDA_E SET IDENTIFICACAO_FUNCIONARIO = COD_FUNC_RETIROU WHERE SAIDA_PRODUTO_ACABADO = "
                       "0 AND N_OS <> '' AND N_OS IS NOT NULL;")},
    {"Up401I_4",
     Todos("UPDATE TSAIDA_E SET TSAIDA_E.COD_FUNC_RETIROU = F.CODIGO FROM TSAIDA_E AS S INNER JOIN TFUNCION AS F ON "
           "S.IDENTIFICACAO_FUNCIONARIO = F.INDENTIFICACAO WHERE IDENTIFICACAO_FUNCIONARIO IS NOT NULL AND "
           "IDENTIFICACAO_FUNCIONARIO <> ' AND SAIDA_PRODUTO_ACABADO = 0;")},
    {"Up401I_5", Todos("UPDATE TSAIDA_E SET IDENTIFICACAO_FUNCIONARIO = F.INDENTIFICACAO FROM TSAIDA_E AS S INNER JOIN "
                       "TFUNCION AS F ON S.COD_FUNC_RETIROU = F.CODIGO WHERE S.IDENTIFICACAO_FUNCIONARIO IS NULL OR "
                       "S.IDENTIFICACAO_FUNCIONARIO = '';")},
    {"Up401I_6",
     Todos("UPDATE TSAIDA_E SET TSAIDA_E.COD_FUNC_RETIROU = F.CODIGO FROM TSAIDA_E AS S INNER JOIN TFUNCION AS F ON "
           "S.IDENTIFICACAO_FUNCIONARIO = F.INDENTIFICACAO WHERE S.IDENTIFICACAO_FUNCIONARIO IS NOT NULL AND "
           "S.IDENTIFICACAO_FUNCIONARIO <> '' AND S.SAIDA_PRODUTO_ACABADO = 0;")},
    {"Up401I_7", Todos("UPDATE TSAIDA_E SET IDENTIFICACAO_FUNCIONARIO = F.INDENTIFICACAO FROM TSAIDA_E AS S INNER JOIN "
                       "TFUNCION AS F ON S.COD_FUNC_RETIROU = F.CODIGO WHERE S.IDENTIFICACAO_FUNCIONARIO IS NULL OR "
                       "S.IDENTIFICACAO_FUNCIONARIO = '' AND S.COD_FUNC_RETIROU = S.IDENTIFICACAO_FUNCIONARIO;")},
    {"Up401I_8", Todos("UPDATE TCFG_SAIDA SET IDENT_FUNCION_SAIDA_AUTO = F.INDENTIFICACAO FROM TCFG_SAIDA AS S INNER "
                       "JOIN TFUNCION AS F ON S.COD_FUNCION_SAIDA_AUTO = F.CODIGO AND S.COD_EMPRESA = F.COD_EMPRESA;")},
    {"Up401I_9", Todos("UPDATE TCFG_SER SET IDENT_FUNCION_SAIDA_AUTO = F.INDENTIFICACAO FROM TCFG_SER AS S INNER JOIN "
                       "TFUNCION AS F ON S.COD_FUNCION_SAIDA_AUTO_PA = F.CODIGO AND S.COD_EMPRESA = F.COD_EMPRESA;")},
};

}  // namespace

std::span<const TCorrecao> CorrecoesAnteriores() { return kAnteriores; }

std::span<const TCorrecao> CorrecoesPosteriores() { return kPosteriores; }

}  // namespace wkd
