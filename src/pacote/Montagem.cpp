#include "Montagem.h"

#include <algorithm>
#include <set>

#include "Inventario.h"
#include "PacoteJson.h"
#include "dialect/Dialeto.h"
#include "package/Caminho.h"
#include "package/Pacote.h"
#include "packet/DataPacket.h"
#include "packet/DicionarioDoPacote.h"
#include "tables/MarcaDaBackup.h"
#include "values/ConteudoDeArquivo.h"
#include "values/Erros.h"
#include "values/Texto.h"

namespace wkd {

namespace {

struct TTabelaDoDicionario {
    const char *nome, *arquivo;
    std::vector<std::string> ordem;      // columns that the table may lack
    std::vector<const char*> doCliente;  // columns whose name marks a row as the customer's
    bool obrigatoria = false, indices = false;
};

const std::vector<TTabelaDoDicionario>& Dicionario() {
    static const std::vector<TTabelaDoDicionario> tabelas = {
        {"SARQUIVO", "SARQUIVO.WKD", {"COD_MODULO", "NOME_ARQUIVO"}, {"NOME_ARQUIVO"}, true},
        {"SATRIB", "SAtrib.WKD", {"ARQUIVO", "SEQUENCIA", "NOME"}, {"ARQUIVO", "NOME"}, true},
        {"SINDSEC", "SINDSEC.WKD", {"ARQUIVO", "NOME"}, {"ARQUIVO"}, false, true},
        {"SINDSECA", "SINDSECA.WKD", {"ARQUIVO", "NOME", "SEQUENCIA", "CAMPO"}, {"ARQUIVO"}, false, true},
        {"SLOOKUP", "SLOOKUP.WKD", {"ARQUIVO", "CAMPO", "AUT_", "CAMPOPAI", "CAMPOFILHO"}, {"ARQUIVO", "CAMPO"}},
        {"SPESQ", "SPESQ.WKD", {"ARQUIVO", "NOMEPESQUISA", "SEQ"}, {"ARQUIVO", "NOMEPESQUISA"}},
        {"SPESQAUX", "SPESQAUX.WKD", {"ARQUIVO", "NOME", "SEQ", "CAMPOS", "AUT_"}, {"ARQUIVO", "NOME"}},
        {"SADMMOD", "SADMMOD.WKD", {"COD_MODULO"}, {}},
        {"SRELATOR", "SRELATOR.WKD", {"ARQUIVO"}, {"ARQUIVO"}},
        {"SARQ_RELACIONA_PAI",
         "SARQ_RELACIONA_PAI.WKD",
         {"ARQUIVO_PAI", "ARQUIVO_FILHO", "CAMPO_PAI", "CAMPO_FILHO"},
         {"ARQUIVO_PAI", "ARQUIVO_FILHO"}},
        {"SLISTA_CONTROLE", "SLISTA_CONTROLE.WKD", {"ARQUIVO", "CAMPO", "VALOR", "TEXTO"}, {"ARQUIVO", "CAMPO"}},
    };
    return tabelas;
}

bool Existe(const std::vector<std::string>& nomes, std::string_view nome) {
    return std::ranges::any_of(nomes, [&](const auto& outro) { return IgualSemCaixa(outro, nome); });
}

/// Order by the columns of this list that the table has, then by its key.
std::string Ordem(TConnection& conexao, const std::string& tabela, std::vector<std::string> colunas) {
    const auto fisicas = conexao.Colunas(tabela);
    std::erase_if(colunas, [&](const auto& coluna) { return !ColunaDeNome(fisicas, coluna); });
    for (const auto& coluna : conexao.ChavePrimaria(tabela).colunas)
        if (!Existe(colunas, coluna)) colunas.push_back(Dialeto(conexao).Identificador(coluna));
    return colunas.empty() ? "" : " order by " + Junta(colunas, ", ");
}

TDataPacket Linhas(TConnection& conexao, const std::string& sql) {
    TDataPacket pacote;
    const auto consulta = conexao.Prepara(sql);
    consulta->Abre();
    for (const auto& campo : consulta->Campos()) pacote.campos.push_back(CampoDePacote(campo));
    while (consulta->Proximo()) {
        TLinha linha;
        for (std::size_t i = 0; i < pacote.campos.size(); ++i) linha.push_back(consulta->Valor(i));
        pacote.linhas.push_back(std::move(linha));
    }
    return pacote;
}

/// Names in a column of a packet; empty where the packet lacks the column.
class TNomes {
  public:
    TNomes(const TDataPacket& pacote, std::string_view coluna)
        : posicao_(IndiceDoCampo({pacote.campos.begin(), pacote.campos.end()}, coluna)) {}
    std::string operator()(const TLinha& linha) const {
        return posicao_ < 0 ? "" : ChaveDeNome(linha[static_cast<std::size_t>(posicao_)].ComoTexto());
    }

  private:
    int posicao_;
};

using TIndices = std::set<std::pair<std::string, std::string>>;  // table and index

/// The indexes that have a column of the customer's. Without that column each would be another index, unique in too
/// little.
TIndices IndicesDoCliente(const TDataPacket& sindseca) {
    const TNomes arquivo(sindseca, "ARQUIVO"), nome(sindseca, "NOME"), campo(sindseca, "CAMPO");
    TIndices indices;
    for (const auto& linha : sindseca.linhas)
        if (DoCliente(campo(linha))) indices.emplace(arquivo(linha), nome(linha));
    return indices;
}

void TiraDoCliente(TDataPacket& pacote, const TTabelaDoDicionario& tabela, const TIndices& indices) {
    const TNomes arquivo(pacote, "ARQUIVO"), indice(pacote, "NOME");
    std::vector<TNomes> nomes;
    for (const char* coluna : tabela.doCliente) nomes.emplace_back(pacote, coluna);
    std::erase_if(pacote.linhas, [&](const TLinha& linha) {
        const std::string pesquisa = arquivo(linha) + "_P_U_";
        const auto doCliente = [&](const TNomes& nome) {
            return DoCliente(nome(linha)) || nome(linha).starts_with(pesquisa);
        };
        return std::ranges::any_of(nomes, doCliente) ||
               (tabela.indices && indices.contains({arquivo(linha), indice(linha)}));
    });
}

}  // namespace

void ExportaDicionario(TConnection& conexao, const std::vector<std::string>& tabelas, TMontagem& montagem) {
    const auto existentes = conexao.NomesDeTabelas();
    const auto exige = [&](const std::string& nome) {
        if (!Existe(existentes, nome)) throw TErroPacote("O banco não tem a tabela '" + nome + "'.");
    };
    const auto linhas = [&](const std::string& tabela, const std::vector<std::string>& ordem) {
        return Linhas(conexao, "select * from " + tabela + Ordem(conexao, tabela, ordem));
    };
    const auto indices = Existe(existentes, "SINDSECA") ? IndicesDoCliente(linhas("SINDSECA", {})) : TIndices();
    for (const auto& tabela : Dicionario()) {
        if (tabela.obrigatoria) exige(tabela.nome);
        if (!Existe(existentes, tabela.nome)) continue;
        auto pacote = linhas(tabela.nome, tabela.ordem);
        TiraDoCliente(pacote, tabela, indices);
        montagem.Pacote(std::move(pacote), tabela.arquivo);
    }
    for (const auto& tabela : tabelas) {
        exige(tabela);
        montagem.Pacote(linhas(tabela, {}), Maiusculas(tabela) + ".WKD");
    }
}

namespace fs = std::filesystem;

namespace {

constexpr std::string_view kArquivos = "ARQUIVOS";

bool TemExtensao(const fs::path& arquivo, std::string_view extensao) {
    return IgualSemCaixa(TextoDoCaminho(arquivo.extension()), extensao);
}

/// Files of the folder by name.
std::vector<fs::path> ArquivosDe(const fs::path& pasta) {
    std::vector<fs::path> arquivos;
    try {
        for (const auto& entrada : fs::directory_iterator(pasta)) {
            const auto nome = NomeDoArquivo(entrada.path());
            if (nome.starts_with('.')) continue;
            if (!entrada.is_regular_file())
                throw TErroPacote("'" + nome + "' não é um arquivo. Um pacote não tem pastas: mova-o para fora.");
            arquivos.push_back(entrada.path());
        }
    } catch (const fs::filesystem_error& erro) {
        throw TErroPacote("A pasta '" + TextoDoCaminho(pasta) + "' não pôde ser lida: " + erro.code().message() + ".");
    }
    std::ranges::sort(arquivos);
    return arquivos;
}

TDataPacket ArquivosVazio() {
    TDataPacket pacote;
    pacote.campos = {CampoDePacote("ARQUIVO", TTipoDado::Texto, 100), CampoDePacote("VERSAO", TTipoDado::Texto, 20),
                     CampoDePacote("CONTEUDO", TTipoDado::Blob)};
    return pacote;
}

std::size_t Posicao(const TDataPacket& pacote, std::string_view nome) {
    return static_cast<std::size_t>(IndiceDoCampo({pacote.campos.begin(), pacote.campos.end()}, nome));
}

}  // namespace

fs::path TMontagem::Incluido(std::string_view nome) const {
    const auto incluido = arquivos_.find(Maiusculas(nome));
    return incluido == arquivos_.end() ? fs::path() : incluido->second;
}

void TMontagem::ExigeLivre(const std::string& nome) const {
    if (!Incluido(nome).empty())
        throw TErroPacote("O pacote teria dois arquivos '" + nome +
                          "' (maiúsculas e minúsculas não diferem). Tire um deles.");
}

void TMontagem::Inclui(const fs::path& arquivo) {
    ExigeLivre(NomeDoArquivo(arquivo));
    arquivos_.emplace(Maiusculas(NomeDoArquivo(arquivo)), arquivo);
}

void TMontagem::Pacote(TDataPacket pacote, const std::string& nome) {
    ExigeLivre(nome);
    const auto arquivo = passageira_.Caminho() / CaminhoDoTexto(nome);
    GravaPacote(std::move(pacote), arquivo, TFormaPacote::Binario);
    Inclui(arquivo);
}

void TMontagem::Arquivo(const fs::path& arquivo, std::vector<fs::path>& soltos) {
    if (NomeDeJson(arquivo)) return Pacote(LeJson(arquivo), TextoDoCaminho(arquivo.stem()) + ".WKD");
    const bool pacote = TemExtensao(arquivo, ".wkd") || IgualSemCaixa(NomeDoArquivo(arquivo), kArquivos);
    if (pacote) LePacoteInteiro(arquivo);
    if (pacote || TemExtensao(arquivo, ".rtm"))
        Inclui(arquivo);
    else
        soltos.push_back(arquivo);
}

void TMontagem::Pasta(const fs::path& pasta, const std::string& versao) {
    std::vector<fs::path> soltos;
    pasta_ = pasta;
    for (const auto& arquivo : ArquivosDe(pasta)) Arquivo(arquivo, soltos);
    if (!soltos.empty()) IncluiSoltos(soltos, versao);
}

void TMontagem::IncluiSoltos(const std::vector<fs::path>& soltos, const std::string& versao) {
    auto pacote = ArquivosVazio();
    if (const auto no = arquivos_.extract(std::string(kArquivos)); !no.empty()) {
        pacote = LePacote(no.mapped());
        ExigeCampos(pacote, no.mapped(), {"ARQUIVO", "VERSAO", "CONTEUDO"});
    }
    const auto nome = Posicao(pacote, "ARQUIVO"), qual = Posicao(pacote, "VERSAO"), onde = Posicao(pacote, "CONTEUDO");
    for (const auto& solto : soltos) {
        const bool repetido = std::ranges::any_of(pacote.linhas, [&](const TLinha& linha) {
            return ChaveDeNome(linha[nome].ComoTexto()) == ChaveDeNome(NomeDoArquivo(solto));
        });
        if (repetido) throw TErroPacote("O pacote ARQUIVOS já tem o arquivo '" + NomeDoArquivo(solto) + "'.");
        TLinha linha(pacote.campos.size());
        linha[nome] = NomeDoArquivo(solto);
        if (!versao.empty()) linha[qual] = versao;
        linha[onde] = ConteudoDeArquivo(solto);
        pacote.linhas.push_back(std::move(linha));
    }
    Pacote(std::move(pacote), std::string(kArquivos));
}

void TMontagem::Grava(const fs::path& pacote) {
    std::error_code erro;
    if (!pasta_.empty() && fs::equivalent(fs::absolute(pacote).parent_path(), pasta_, erro))
        throw TErroPacote("Grave o pacote fora da pasta de que ele é feito.");
    LeSarquivo(Incluido(kSarquivo));
    LeSatrib(Incluido(kSatrib));
    if (Incluido(kArquivos).empty()) Pacote(ArquivosVazio(), std::string(kArquivos));
    std::vector<fs::path> arquivos;
    for (const auto& [nome, arquivo] : arquivos_) arquivos.push_back(arquivo);
    CompactaZip(arquivos, pacote);
}

}  // namespace wkd
