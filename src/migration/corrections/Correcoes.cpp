#include "corrections/Correcoes.h"

#include <algorithm>
#include <chrono>
#include <vector>

#include "alter/IndicesGuardados.h"
#include "context/Contexto.h"
#include "dialect/Dialeto.h"
#include "layout/Tini.h"
#include "values/Texto.h"

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

namespace {

constexpr std::string_view kIndice = "TCRTLCHQ_CODIGO";

/// The dictionary does not know this index. An earlier run may have been ended between its drop and its creation.
void RefazIndice(TContexto& ctx) {
    const auto indices = ctx.Conexao().Indices("TCRTLCHQ");
    if (!ctx.dm.ExisteTabela("TCRTLCHQ") ||
        std::ranges::any_of(indices, [](const TIndice& indice) { return IgualSemCaixa(indice.nome, kIndice); }))
        return;
    Tolera([&] {
        ctx.Conexao().ExecuteDirect("create INDEX TCRTLCHQ_CODIGO on TCRTLCHQ (COD_EMPRESA, COD_RELACIONA, TIPO)");
    });
}

void Relata(TContexto& ctx, const std::string& tabela, const TErro& erro) {
    ctx.Tela().Erro(
        TErroDaExecucao::NosDois(erro, tabela, "AjustaCodReceber", "Tabela: " + tabela + " - " + erro.mensagem));
}

/// What the steps drop in the table, and what a run that was ended between them had dropped.
TIndicesGuardados Guarda(TContexto& ctx, const std::string& tabela) {
    TIndicesGuardados guardados(ctx, tabela, true);
    auto indices = ctx.Conexao().Indices(tabela);
    std::erase_if(indices, [](const TIndice& indice) { return !IgualSemCaixa(indice.nome, kIndice); });
    guardados.GuardaIndices(indices);
    guardados.GuardaChave(ctx.dm.Atualiza.ColunasDaChave(tabela));
    return guardados;
}

/// Key and indexes as the dictionary has them; what it has not, or cannot be made so, as it was.
void Refaz(TContexto& ctx, const std::string& tabela, TIndicesGuardados& guardados) {
    if (!ctx.dm.ExisteTabela(tabela)) return;
    TTB& tb = ctx.dm.Atualiza;
    const bool comChave = tb.CriaIndicePrimario(tabela, false);
    const TErro erroDaChave = tb.Erro();
    if (!tb.CriaIndiceSecundarios(tabela)) Relata(ctx, tabela, tb.Erro());
    guardados.Devolve();
    const bool pedida = !tb.ColunasDaChave(tabela).empty();
    if (!comChave && (pedida || !tb.ExisteIndicePrimario(tabela))) Relata(ctx, tabela, erroDaChave);
}

}  // namespace

void AjustaCodReceber(TContexto& ctx, std::span<const TTextoPorTipo> passos, std::size_t& feitos) {
    TIndicesGuardados deTcrtlchq = Guarda(ctx, "TCRTLCHQ"), deTchqcanc = Guarda(ctx, "TCHQCANC");
    const auto esquece = [&] {
        deTcrtlchq.Esquece();
        deTchqcanc.Esquece();
    };
    try {
        for (const TTextoPorTipo& passo : passos) {
            const auto comando = passo.Para(ctx.Banco());
            if (comando.empty()) continue;
            ctx.Conexao().ExecuteDirect(comando);
            ++feitos;
        }
        esquece();
    } catch (...) {
        RefazIndice(ctx);
        Refaz(ctx, "TCRTLCHQ", deTcrtlchq);
        Refaz(ctx, "TCHQCANC", deTchqcanc);
        esquece();
        throw;
    }
}

namespace {

/// `feitos`: how many statements of several ran.
void Executa(TContexto& ctx, const TCorrecao& correcao, std::size_t& feitos) {
    if (!correcao.passos.empty()) return AjustaCodReceber(ctx, correcao.passos, feitos);
    const std::string comando(correcao.comando.Para(ctx.Banco()));
    ctx.Conexao().ExecuteDirect(correcao.ajustada ? ctx.Dialeto().AjustaQuery(comando) : comando);
}

bool Pendente(TContexto& ctx, const TCorrecao& correcao) {
    return LeParametro(kSecaoDasCorrecoes, correcao.nome, "NAO", &ctx.Conexao()) != "SIM";
}

void AcrescentaPendentes(TContexto& ctx, std::span<const TCorrecao> correcoes,
                         std::vector<std::string_view>& pendentes) {
    for (const TCorrecao& correcao : correcoes)
        if (correcao.ExisteNo(ctx.Banco()) && Pendente(ctx, correcao)) pendentes.push_back(correcao.nome);
}

/// One that the server has no words for, or for whose table or column the database has no use, is not of this database.
TDesfecho DesfechoDaFalha(TFalha falha, std::size_t feitos) {
    if (feitos > 0) return TDesfecho::PelaMetade;
    switch (falha) {
        case TFalha::Sintaxe:
        case TFalha::ObjetoInexistente:
        case TFalha::ColunaInexistente:
        case TFalha::ObjetoExistente:
            return TDesfecho::NaoSeAplica;
        default:
            return TDesfecho::NaoFeito;
    }
}

/// Runs a correction that the database has not seen yet. One that fails is recorded as done, too: it is never tried
/// again. True when it was its turn.
bool ExecutaQuery(TContexto& ctx, const TCorrecao& correcao) {
    const std::string nome(correcao.nome);
    if (!Pendente(ctx, correcao)) return false;
    ctx.Tela().Memo1("Executando Query: " + nome);
    ctx.Tela().ProcessaMensagens();
    TPassoRegistrado registrada{.nome = nome};
    std::size_t feitos = 0;
    const auto inicio = std::chrono::steady_clock::now();
    try {
        Executa(ctx, correcao, feitos);
        registrada.desfecho = TDesfecho::Feito;
    } catch (const std::exception& e) {
        registrada.erro = "Erro rodando a query: " + nome + " | Erro: " + e.what();
        registrada.falha = ErroDe(e).falha;
        registrada.desfecho = DesfechoDaFalha(registrada.falha, feitos);
    }
    registrada.segundos = std::chrono::duration<double>(std::chrono::steady_clock::now() - inicio).count();
    ctx.evidencia.correcoes.push_back(registrada);
    GravaParametro(kSecaoDasCorrecoes, nome, "SIM", &ctx.Conexao());
    if (!registrada.erro.empty()) ctx.Tela().Memo1(registrada.erro);
    return true;
}

/// Corrections create and alter columns: what is cached of them is read anew.
void Executa(TContexto& ctx, std::span<const TCorrecao> correcoes) {
    bool executou = false;
    for (const TCorrecao& correcao : correcoes)
        if (correcao.ExisteNo(ctx.Banco()) && ExecutaQuery(ctx, correcao)) executou = true;
    if (executou) ctx.dm.AtualizaListaDeTabelas();
}

}  // namespace

std::vector<std::string_view> CorrecoesPendentes(TContexto& ctx) {
    const bool posteriores = ctx.opcoes.querysPosteriores;
    const bool anteriores = ctx.opcoes.querysAnteriores && (ctx.estado.usuariosOnline || posteriores);
    std::vector<std::string_view> pendentes;
    if (anteriores) AcrescentaPendentes(ctx, CorrecoesAnteriores(), pendentes);
    if (posteriores) AcrescentaPendentes(ctx, CorrecoesPosteriores(), pendentes);
    return pendentes;
}

bool CorrecaoMexeAntes(TContexto& ctx, std::string_view tabela) {
    if (!ctx.opcoes.querysAnteriores || !ctx.estado.usuariosOnline) return false;
    const std::string nome = Maiusculas(tabela);
    return std::ranges::any_of(CorrecoesAnteriores(), [&](const TCorrecao& correcao) {
        return correcao.ExisteNo(ctx.Banco()) &&
               Maiusculas(correcao.comando.Para(ctx.Banco())).find(nome) != std::string::npos &&
               Pendente(ctx, correcao);
    });
}

void QuerysAnteriores(TContexto& ctx) {
    if (ctx.opcoes.querysAnteriores) Executa(ctx, CorrecoesAnteriores());
}

void QuerysPosteriores(TContexto& ctx) {
    if (!ctx.opcoes.querysPosteriores) return;
    if (!ctx.estado.usuariosOnline) QuerysAnteriores(ctx);
    Executa(ctx, CorrecoesPosteriores());
}

}  // namespace wkd
