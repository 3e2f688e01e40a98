#include "Passos.h"

#include "Casos.h"
#include "layout/Preambulo.h"
#include "packet/DataPacket.h"
#include "passes/CamposPersonalizados.h"
#include "passes/Passes.h"

namespace wkd {

TPassos::TPassos(const TBancoGrande& banco) : dm_(banco.Aliases(), tela_), opcoes_(banco.Opcoes()) {
    dm_.SQLConnection1.SetAlias("GRANDE");
    dm_.SQLConnection1.Open();
    dm_.AtualizaListaDeTabelas();
    AtualizaTabelasDoDicionario(dm_);
    dm_.AtualizaListaDeTabelas();
    dm_.SArquivoNovo.Carrega(LePacote(banco.Pasta() / "SARQUIVO.WKD").Tabela());
}

void TodosOsPasses(TContexto& ctx) {
    for (const auto passe : {ApagaAtributosOrfaos, AtualizaValorPadrao, AtualizaLookup, AtualizaLookupFisico,
                             AtualizaCamposPersonalizados, verificaIndicesPrimarios, Dicionario_tabelas})
        passe(ctx);
}

namespace {

void Le(TConnection& banco, std::string_view sql) {
    const auto consulta = banco.Prepara(sql);
    for (consulta->Abre(); consulta->Proximo();)
        for (std::size_t i = 0; i < consulta->Campos().size(); ++i) static_cast<void>(consulta->Valor(i));
}

/// A transaction that empties a table and puts that many rows of ten texts into it.
void Enche(TConnection& banco, const std::string& apaga, const std::string& inclui, int linhas) {
    TTransacao transacao(banco);
    banco.Prepara(apaga)->Executa();
    const auto comando = banco.Prepara(inclui);
    for (int linha = 0; linha < linhas; ++linha) {
        comando->Atribui(0, "TAB" + std::to_string(1000 + linha / kColunas));
        comando->Atribui(1, "CAMPO" + std::to_string(linha % kColunas));
        if (comando->Parametros().size() > 2) comando->Atribui(2, "Descrição da coluna CAMPO");
        comando->Executa();
    }
    transacao.Commit();
}

void EncheDicionarioDeRelatorios(TConnection& banco, int tabelas) {
    Enche(banco, "delete from trbtable", "insert into TRBTABLE (TableName, TableAlias) values (:a, :b)", tabelas);
    Enche(banco, "delete from trbfield",
          "insert into TRBFIELD (TableName, FieldName, FieldAlias, DataType, Searchable, Sortable, Selectable, "
          "AutoSearch, Mandatory) values (:a, :b, :c, 'dtString', 'T', 'T', 'T', 'F', 'F')",
          tabelas * kColunas);
}

/// The statements that the passes are made of, each once.
void ComandosDosPasses(TConnection& banco, int tabelas) {
    for (const std::string tabela : {"satrib", "slookup"})
        banco
            .Prepara("delete from " + tabela +
                     " where not exists (select nome_arquivo from sarquivo where "
                     "nome_arquivo = " +
                     tabela + ".ARQUIVO)")
            ->Executa();
    Le(banco,
       "select arquivo,nome,valor_padrao,tipo from satrib where (valor_padrao is not null) and (valor_padrao <> '')");
    Le(banco, "select * from tini WHERE CHAVE = 'LOOKUPFISICO' AND SESSAO = 'HBN4'");
    Le(banco, "select arquivo,cod_plugin from satrib_user group by arquivo,cod_plugin");
    banco.TodasAsChaves();
    Le(banco, "select nome_arquivo, cod_modulo from sarquivo");
    Le(banco, "select count(*) as total from sarquivo");
    Le(banco, "select * from sarquivo");
    Le(banco, "select count(*) as total from satrib where ((lookup_arquivo is null) or (lookup_arquivo = ''))");
    EncheDicionarioDeRelatorios(banco, tabelas);
}

}  // namespace

std::vector<TMedida> MedePassos(TBancada& bancada) {
    std::vector<TMedida> medidas;
    for (const TLugar& lugar : bancada.Lugares()) {
        const TBancoGrande& banco = bancada.Grande(lugar, bancada.Quantos(kTabelas));
        TPassos passos(banco);
        std::size_t comandos = 0;
        const auto executa = [&](void (*passo)(TContexto&)) { comandos = passos.Observa(passo).size(); };
        const auto conexao = banco.Conexao();
        executa(AtualizaLookupFisico);  // once per database
        medidas.push_back(Alterna(
            {.trabalho = "dicionário de relatórios, " + banco.Tamanho() + ", " + lugar.nome,
             .piso = "apagar e incluir as mesmas linhas, uma transação por tabela",
             .limite = 1.2},
            3, [&] { executa(Dicionario_tabelas); }, [&] { EncheDicionarioDeRelatorios(*conexao, banco.Tabelas()); }));
        medidas.back().comandos = static_cast<int>(comandos);
        medidas.push_back(Alterna(
            {.trabalho = "passos finais, " + banco.Tamanho() + ", " + lugar.nome,
             .piso = "os comandos de que são feitos",
             .limite = 1.3},
            3, [&] { executa(TodosOsPasses); }, [&] { ComandosDosPasses(*conexao, banco.Tabelas()); }));
        medidas.back().comandos = static_cast<int>(comandos);
    }
    return medidas;
}

}  // namespace wkd
