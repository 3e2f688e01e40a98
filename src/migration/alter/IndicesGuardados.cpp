#include "alter/IndicesGuardados.h"

#include <algorithm>
#include <cstdlib>
#include <map>

#include "alter/ObjetosDaTabela.h"
#include "dialect/Dialeto.h"
#include "layout/Tini.h"
#include "tables/MarcaDaBackup.h"
#include "values/Texto.h"

namespace wkd {

namespace {

constexpr char kEntreGuardados = '\x1f', kEntreCampos = '\x1e';
constexpr std::size_t kPedaco = 40;  // bytes in a row of TINI, which is not wide everywhere

bool Iguais(const std::vector<std::string>& umas, const std::vector<std::string>& outras) {
    return std::ranges::equal(umas, outras, [](const auto& a, const auto& b) { return IgualSemCaixa(a, b); });
}

std::string ComandoCriaChave(const TChavePrimaria& chave, const std::string& tabela, TTipoBanco banco) {
    std::vector<std::string> colunas;
    for (const auto& coluna : chave.colunas) colunas.push_back(Dialeto(banco).Identificador(coluna));
    return "alter table " + tabela + " add constraint " + Dialeto(banco).Identificador(chave.nome) + " primary key (" +
           Junta(colunas, ",") + ")";
}

std::vector<std::string> Pedacos(std::string_view texto) {
    std::vector<std::string> pedacos;
    while (!texto.empty()) {
        const std::size_t corte = CaracteresInteiros(texto.substr(0, kPedaco));
        pedacos.emplace_back(texto.substr(0, corte));
        texto.remove_prefix(corte);
    }
    return pedacos;
}

}  // namespace

TIndicesGuardados::TIndicesGuardados(TContexto& ctx, std::string_view tabela, bool retoma)
    : ctx_(ctx), nome_(tabela), tabela_(Maiusculas(tabela)) {
    if (retoma && ctx.dm.ExisteTabela("TINI")) Le();
}

void TIndicesGuardados::Le() {
    const std::string inicio = tabela_ + "/";
    std::map<int, std::string> pedacos;
    for (const auto& [secao, chave, valor] : Parametros(ctx_.Conexao(), {kSecaoDosGuardados}))
        if (chave.starts_with(inicio)) pedacos[std::atoi(chave.c_str() + inicio.size())] = valor;

    pedacos_ = pedacos.size();
    std::string texto;
    for (const auto& [numero, pedaco] : pedacos) texto += pedaco;
    for (const auto& guardado : Divide(texto, kEntreGuardados))
        if (const auto campos = Divide(guardado, kEntreCampos); campos.size() >= 2)
            guardados_.push_back({campos[0], campos[1], {campos.begin() + 2, campos.end()}});
}

void TIndicesGuardados::GuardaIndices(std::vector<TIndice> indices) {
    if (indices.empty()) return;
    std::erase_if(indices, [](const TIndice& indice) { return !indice.restricao.empty(); });
    const auto comoEram = IndicesComoEram(ctx_, tabela_, indices);
    for (std::size_t i = 0; i < indices.size(); ++i) Guarda({indices[i].nome, comoEram[i].comando, {}});
    Grava();
}

void TIndicesGuardados::GuardaChave(const std::vector<std::string>& pedida) {
    const auto chave = ctx_.Conexao().ChavePrimaria(tabela_);
    const bool volta = IgualSemCaixa(chave.nome, "PK_" + tabela_) && Iguais(chave.colunas, pedida);
    if (chave.nome.empty() || volta) return;
    Guarda({chave.nome, ComandoCriaChave(chave, tabela_, ctx_.Banco()), chave.colunas});
    Grava();
}

/// A table has one key, and one index of a name.
void TIndicesGuardados::Guarda(TGuardado guardado) {
    std::erase_if(guardados_, [&](const TGuardado& outro) {
        return outro.Chave() == guardado.Chave() && (outro.Chave() || IgualSemCaixa(outro.nome, guardado.nome));
    });
    guardados_.push_back(std::move(guardado));
}

/// In one transaction: an interruption leaves the ones or the others.
void TIndicesGuardados::Grava() {
    if (!ctx_.dm.ExisteTabela("TINI")) return;
    std::vector<std::string> textos;
    for (const auto& [nome, comando, colunas] : guardados_) {
        std::vector<std::string> campos = {nome, comando};
        campos.insert(campos.end(), colunas.begin(), colunas.end());
        textos.push_back(Junta(campos, std::string(1, kEntreCampos)));
    }
    const auto pedacos = Pedacos(Junta(textos, std::string(1, kEntreGuardados)));
    const auto chave = [this](std::size_t i) { return tabela_ + "/" + std::to_string(i); };
    std::vector<std::string> antigas;
    std::vector<TParametro> novos;
    for (std::size_t i = 0; i < pedacos_; ++i) antigas.push_back(chave(i));
    for (std::size_t i = 0; i < pedacos.size(); ++i)
        novos.push_back({std::string(kSecaoDosGuardados), chave(i), pedacos[i]});
    TTransacao transacao(ctx_.Conexao());
    ApagaParametros(ctx_.Conexao(), kSecaoDosGuardados, antigas);
    IncluiParametros(ctx_.Conexao(), novos);
    transacao.Commit();
    pedacos_ = pedacos.size();
}

bool TIndicesGuardados::ChavePendente() const {
    if (std::ranges::none_of(guardados_, &TGuardado::Chave)) return false;
    return !Iguais(ctx_.Conexao().ChavePrimaria(tabela_).colunas, ctx_.dm.Atualiza.ColunasDaChave(nome_));
}

bool TIndicesGuardados::Falta(const TGuardado& guardado) const {
    TConnection& conexao = ctx_.Conexao();
    if (!guardado.Chave())
        return std::ranges::none_of(conexao.Indices(tabela_),
                                    [&](const TIndice& indice) { return IgualSemCaixa(indice.nome, guardado.nome); });
    const auto fisicas = conexao.Colunas(tabela_);
    return conexao.ChavePrimaria(tabela_).nome.empty() &&
           std::ranges::all_of(guardado.colunas, [&](const auto& nome) { return ColunaDeNome(fisicas, nome); });
}

void TIndicesGuardados::Devolve() {
    if (!ctx_.dm.ExisteTabela(tabela_)) return;
    for (const TGuardado& guardado : guardados_)
        if (Falta(guardado)) Devolve(guardado);
}

/// The new table may take NULL where the old one did not; what the server has against it, it says of the key.
void TIndicesGuardados::ExigeValores(const std::vector<std::string>& colunas) {
    const auto fisicas = ctx_.Conexao().Colunas(tabela_);
    for (const auto& nome : colunas)
        if (const TColunaFisica* coluna = ColunaDeNome(fisicas, nome); coluna && !coluna->requerido)
            ctx_.dm.Executa(ctx_.Dialeto().ExigeValor(tabela_, *coluna));
}

/// Whether the dictionary has it, too.
bool TIndicesGuardados::Pedido(const TGuardado& guardado) const {
    if (guardado.Chave()) return !ctx_.dm.Atualiza.ColunasDaChave(nome_).empty();
    return std::ranges::any_of(ctx_.dm.Atualiza.Dicionario().Indices(nome_),
                               [&](const auto& indice) { return IgualSemCaixa(indice.nome, guardado.nome); });
}

/// The next run tries again what was told.
void TIndicesGuardados::Devolve(const TGuardado& guardado) {
    const std::string qual = (guardado.Chave() ? "a chave " : "o índice ") + guardado.nome;
    ExigeValores(guardado.colunas);
    const TResultado devolvido = ctx_.dm.Executa(guardado.comando);
    ctx_.evidencia.Comando({guardado.comando, "", devolvido.Mensagem()});
    if (devolvido && !Pedido(guardado))
        return ctx_.Tela().Memo1("Tabela " + tabela_ + ": " + qual + " voltou como era");
    ctx_.repeteTabela = true;
    const std::string linha = "Tabela " + tabela_ + ": " + qual +
                              (guardado.Chave() ? " não pôde ser feita" : " não pôde ser feito") +
                              " como pede o pacote " +
                              (devolvido ? "e voltou como era: " + guardado.comando
                                         : "nem voltou como era: " + guardado.comando + ": " + devolvido.Mensagem());
    TErro erro = devolvido ? TErro{.falha = TFalha::Restricao} : devolvido.Erro().Dados();
    erro.mensagem = linha;
    ctx_.Tela().Erro(TErroDaExecucao::NosDois(std::move(erro), tabela_, "Índices"));
}

void TIndicesGuardados::Esquece() {
    guardados_.clear();
    if (pedacos_ > 0) Grava();
}

}  // namespace wkd
