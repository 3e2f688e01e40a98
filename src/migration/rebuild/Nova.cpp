#include "rebuild/Nova.h"

#include <algorithm>
#include <stdexcept>
#include <vector>

#include "alter/DicionarioDaTabela.h"
#include "copy/Rejeitados.h"
#include "decision/DecisaoDaTabela.h"
#include "rebuild/CriaBackup.h"
#include "rebuild/EstadoDaReconstrucao.h"
#include "rebuild/Reconstrucao.h"
#include "rows/WKDQuery.h"
#include "tables/MarcaDaBackup.h"
#include "values/Texto.h"

namespace wkd {

namespace {

/// The customer's columns that the merge takes from SATRIB_USER.
void AcrescentaPersonalizadas(TContexto& ctx, const std::string& tabela, std::vector<TColunaDicionario>& colunas) {
    TWKDQuery q(ctx.Conexao(), "select * from satrib_user where satrib_user.arquivo = " + Aspas(tabela));
    for (q.Open(); !q.Eof(); q.Next()) {
        const std::string nome(Apara(q.Texto("NOME")));
        const bool tem = std::any_of(colunas.begin(), colunas.end(),
                                     [&](const auto& coluna) { return IgualSemCaixa(coluna.nome, nome); });
        if (tem || !ctx.dm.Atualiza.Dicionario().Aceita(tabela, "coluna", nome)) continue;
        colunas.push_back({nome, std::string(Apara(q.Texto("TIPO"))), q.Texto("TAMANHO"), q.Texto("VALOR_PADRAO"),
                           q.Texto("CALCULO"), static_cast<int>(q.Inteiro("CHAVE_DE_PESQUISA")),
                           q.Inteiro("SEQUENCIA")});
    }
}

bool EhTabelaDoDicionario(TContexto& ctx, const std::string& nome) {
    return ctx.dm.SArquivoNovo.Existe("NOME_ARQUIVO", {nome}) || !ctx.dm.Atualiza.ColunasDoDicionario(nome).empty() ||
           ContaRegistros(ctx.Conexao(),
                          "select count(*) as total from SARQUIVO where Upper(NOME_ARQUIVO) = " + Aspas(nome)) > 0;
}

}  // namespace

std::vector<TColunaDicionario> ColunasNovas(TContexto& ctx, const std::string& tabela) {
    const bool mescla = ctx.dm.ExisteTabela("SATRIB_USER");
    std::vector<TColunaDicionario> colunas;
    for (const auto& coluna : ctx.novo.Colunas(tabela))
        if (!(mescla && DoCliente(coluna.nome))) colunas.push_back(coluna);
    if (mescla && !colunas.empty()) AcrescentaPersonalizadas(ctx, tabela, colunas);
    std::ranges::stable_sort(colunas, {}, &TColunaDicionario::sequencia);
    return colunas;
}

std::optional<TErro> ImpedimentoDaReconstrucao(TContexto& ctx, const std::string& nome) {
    const std::string tabela = Maiusculas(nome);
    const auto impedida = [](std::string texto, TFalha falha) {
        return TErro{.mensagem = std::move(texto), .falha = falha};
    };
    if (NuncaReconstruida(tabela))
        return impedida("A própria reconstrução usa a tabela " + tabela, TFalha::Impedimento);
    if (ctx.novo.Colunas(nome).empty())
        return impedida("O pacote não tem colunas da tabela " + tabela, TFalha::Dicionario);
    if (const std::string backup = NomeDaBackup(tabela); EhTabelaDoDicionario(ctx, backup))
        return impedida("A tabela de backup " + backup + " teria o nome de uma tabela do dicionário",
                        TFalha::Impedimento);
    if (EstadoDaReconstrucao(ctx, tabela) == TEstadoDaReconstrucao::Alheia) return TTB::NaoEhBackup(tabela);
    if (auto motivo = ColunaForaDoDicionario(ctx)) return motivo;
    return ctx.dm.Atualiza.ImpedimentoParaCriar(tabela, ColunasNovas(ctx, nome));
}

namespace {

constexpr int kTentativas = 2;  // a failure may pass, such as a lock

TErro Causa(const TErroBanco& erro) {
    TErro causa = erro.Dados();
    if (causa.falha == TFalha::EmUso) causa.mensagem.insert(0, "em uso por outra conexão: ");
    return causa;
}

}  // namespace

template <class TPasso, class TDesfaz>
bool TReconstrucao::Tenta(TPasso&& passo, TDesfaz&& desfaz) {
    try {
        passo();
        return true;
    } catch (const TErroBanco& erro) {
        Falhou(Causa(erro));
        if (erro.ConexaoPerdida()) {
            desfaz();
            throw;
        }
    } catch (const std::exception& erro) {
        Falhou(ErroDe(erro));
    }
    desfaz();
    return false;
}

void TReconstrucao::Executa() {
    if (RestauracaoInterrompida(ctx_, tabela_)) {
        if (!Tenta([this] { Retoma(); }, [] {}) || fase_ == TFase::Terminada) return;
    }
    if (!Tenta([this] { Guarda(); }, [this] { Desiste(); }) || !Apaga()) return;
    Tenta([this] { Ergue(); }, [] {});
}

void TReconstrucao::Falhou(TErro erro) {
    ctx_.estado.falhouApagar = true;
    if (RegistrosNaBackup() && erro.falha == TFalha::Outra) erro.falha = TFalha::ReconstrucaoAberta;
    const std::string linha =
        "Tabela " + tabela_ +
        (RegistrosNaBackup() ? ": reconstrução não concluída, registros em " + backup_ + ": " : " não reconstruída: ") +
        erro.mensagem;
    ctx_.Tela().Erro(TErroDaExecucao::NosDois(std::move(erro), tabela_, ctx_.acaoAtual, linha));
}

void TReconstrucao::Avisa(TFalha falha, const std::string& linha) {
    ctx_.Tela().Erro(TErroDaExecucao::NaLista({.mensagem = linha, .falha = falha}, tabela_));
}

/// The table is free again, and gets the indexes that the run has dropped before the rebuild.
void TReconstrucao::Desiste() {
    reserva_.reset();
    if (!existe_) return;
    if (!ctx_.dm.Atualiza.CriaIndiceSecundarios(nome_)) ctx_.Log(ctx_.dm.Atualiza.Erro());
}

void TReconstrucao::Guarda() {
    existe_ = ctx_.dm.ExisteTabela(tabela_);
    if (const auto impedimento = ImpedimentoDaReconstrucao(ctx_, nome_)) throw TErroConhecido(*impedimento);
    if (existe_) reserva_ = ctx_.Conexao().Reserva(tabela_);
    chave_ = ChaveGuardada(ctx_, tabela_);
    // What the restore just brought back is proven again, now that nobody writes.
    const bool conferida =
        fase_ == TFase::Devolvida && ConfereComBackup(ctx_.Conexao(), backup_, tabela_, alteradas_).Igual();
    const TBackupFeito backup = CriaBackup(ctx_, tabela_, chave_, fase_ == TFase::Superada, conferida);
    antes_ = backup.registros;
    chaveAntiga_ = backup.chaveDaTabela;
    ctx_.acaoAtual = "Criar Tabela";
    if (existe_) GuardaObjetos();
    LevaRejeitadosAoDisco(ctx_);
}

void TReconstrucao::GuardaObjetos() {
    GuardaOQueVolta();
    gatilhos_ = GuardaFontes("Gatilho", ctx_.Dialeto().Gatilhos(ctx_.Conexao(), tabela_));
    propriedades_ = GuardaFontes("Propriedade de coluna", PropriedadesPerdidas(ctx_, tabela_));
}

void TReconstrucao::GuardaDevolucoes(const std::vector<std::string>& comandos) {
    if (comandos != Devolucoes()) ctx_.Dialeto().GravaNotas(ctx_.Conexao(), backup_, comandos);
}

/// Comments may have letters that the connection cannot write; these are kept in the rejects file instead.
void TReconstrucao::GuardaOQueVolta() {
    auto devolucoes = Devolucoes();
    for (auto& comando : ComandosDeDevolucao(ctx_, nome_))
        if (std::ranges::find(devolucoes, comando) == devolucoes.end()) devolucoes.push_back(std::move(comando));
    for (int tentativa = 1; tentativa <= kTentativas; ++tentativa) {
        try {
            return GuardaDevolucoes(devolucoes);
        } catch (const TErroBanco& erro) {
            if (erro.ConexaoPerdida()) throw;
        } catch (const TErroConversao&) {
        }
    }
    std::vector<TFonte> comentarios;
    std::erase_if(devolucoes, [&](const std::string& comando) {
        const bool comentario = comando.starts_with("comment on ");
        if (comentario) comentarios.push_back({Divide(comando, ' ').at(3), comando});
        return comentario;
    });
    GuardaDevolucoes(devolucoes);
    comentarios_ = GuardaFontes("Comentário", comentarios);
}

/// Keeps in the rejects file what goes with the table; returns the names.
std::vector<std::string> TReconstrucao::GuardaFontes(std::string_view tipo, const std::vector<TFonte>& fontes) {
    TRejeitados rejeitados(ctx_, tabela_, tipo);
    std::vector<std::string> nomes;
    for (const auto& [nome, texto] : fontes) {
        if (!rejeitados.Valor({}, "apagado com a tabela", nome, texto))
            throw TErroConhecido(TFalha::Arquivo, std::string(tipo) + " " + nome + ": a fonte não pôde ser guardada");
        nomes.push_back(nome);
    }
    return nomes;
}

bool TReconstrucao::Apaga() {
    if (!Tenta([this] { ApagaEMarca(); }, [this] { Desiste(); })) return false;
    if (!existe_) return true;
    ctx_.dm.Commit("Erro apagando a tabela: " + tabela_);
    RelataPerdas();
    return true;
}

/// In one transaction: a table that is gone is known to wait for its rows, whoever creates one of its name. It is the
/// reservation's, so that nobody writes a row after the copy that would go with the table.
void TReconstrucao::ApagaEMarca() {
    TResultado apagada;
    try {
        TTransacao transacao(ctx_.Conexao(), std::move(reserva_));
        MarcaRestaurando(ctx_, tabela_);
        if (existe_) ctx_.Conexao().Prepara("drop table " + tabela_)->Executa();
        transacao.Commit();
    } catch (const TErroBanco& erro) {
        apagada = TResultado(erro);
    }
    if (existe_) ctx_.evidencia.Comando({"drop table " + tabela_, "", apagada.Mensagem()});
    if (apagada) return;
    if (apagada.Erro().ConexaoPerdida()) throw apagada.Erro();
    const auto dependentes = ctx_.Dialeto().Dependentes(ctx_.Conexao(), tabela_);
    TErro causa = Causa(apagada.Erro());
    if (!dependentes.empty()) {
        causa.mensagem += " Dependem dela: " + Junta(dependentes, ", ");
        causa.falha = TFalha::Dependencia;
    }
    throw TErroConhecido(std::move(causa));
}

void TReconstrucao::RelataPerdas() {
    const auto relata = [this](const std::string& motivo, const std::vector<std::string>& nomes) {
        if (!nomes.empty()) Avisa(TFalha::NaoRecriado, "Tabela " + tabela_ + ": " + motivo + ": " + Junta(nomes, ", "));
    };
    relata("gatilhos não recriados, fonte no arquivo de rejeitados", gatilhos_);
    relata("propriedades de colunas não recriadas, fonte no arquivo de rejeitados", propriedades_);
    relata("comentários não recriados, fonte no arquivo de rejeitados", comentarios_);
}

/// An index that refuses no row waits for the rows: every batch would write into it, and is the slower for it.
void TReconstrucao::Ergue() {
    fase_ = TFase::Apagada;
    ctx_.dm.AtualizaListaDeTabelas();
    RegravaDicionarioNovo();
    if (!CriaTabelaComChave(ctx_, nome_)) throw TErroConhecido(ctx_.dm.Atualiza.Erro());
    CriaIndicesDaNova(ctx_, nome_, TTB::TQuais::Unicos);
    const bool restaurada = Restaura(RestauracaoInteira(ctx_, tabela_, chaveAntiga_));
    CriaIndicesDaNova(ctx_, nome_, TTB::TQuais::Repetiveis);
    const TConferencia conferencia = Confere();
    if (restaurada) Termina(conferencia.Igual());
}

/// When the server refuses the new rows, the table comes back as the stored ones have it. A column that is missing
/// among them would leave its values behind in the backup table, so a refused row gets a second try.
void TReconstrucao::RegravaDicionarioNovo() {
    TErro causa;
    for (int tentativa = 1; tentativa <= kTentativas; ++tentativa) {
        try {
            RegravaDicionario(ctx_, nome_, true);
            const auto faltam = ColunasForaDoDicionario();
            if (faltam.empty()) return;
            causa = {.mensagem = "colunas fora do dicionário: " + Junta(faltam, ", "), .falha = TFalha::Dicionario};
        } catch (const TErroBanco& erro) {
            if (erro.ConexaoPerdida()) throw;
            causa = erro.Dados();
        }
    }
    Falhou(std::move(causa));
}

std::vector<std::string> TReconstrucao::ColunasForaDoDicionario() {
    std::set<std::string> guardadas;
    for (const auto& coluna : ctx_.dm.Atualiza.ColunasDoDicionario(tabela_)) guardadas.insert(ChaveDeNome(coluna.nome));
    std::vector<std::string> faltam;
    for (const auto& coluna : ColunasNovas(ctx_, nome_))
        if (ColunaFisica(coluna) && !guardadas.contains(ChaveDeNome(coluna.nome))) faltam.push_back(coluna.nome);
    return faltam;
}

bool TReconstrucao::Restaura(const TRestante& restante) {
    return Tenta(
        [&] { alteradas_ = VoltaBackup(ctx_, tabela_, chave_, restante); },
        [this] {
            ctx_.Tela().Erro(TErroDaExecucao::NaCaixa(
                {.mensagem = "Problema voltando backup da tabela : " + tabela_, .falha = TFalha::ReconstrucaoAberta},
                tabela_));
            ctx_.Tela().PbAtual().Posicao(0);
        });
}

TConferencia TReconstrucao::Confere() {
    const TConferencia c = ConfereComBackup(ctx_.Conexao(), backup_, tabela_, alteradas_);
    // What has been entered since the restore was broken off is in the table alone.
    const bool retoma = fase_ == TFase::Retomando;
    const bool entraram = retoma && c.naTabela == antes_ && c.diferentes == 0 && c.colunas.empty();
    const std::string contagem =
        " Nº de registros antes: " + std::to_string(antes_) + " Nº de registros depois: " + std::to_string(c.naTabela);
    if (c.naTabela != antes_) {
        Avisa(TFalha::RegistrosAMenos, "***** ATENÇÃO *******");
        Avisa(TFalha::RegistrosAMenos, "***** TABELA " + tabela_ + contagem);
    }
    if (c.Igual() || entraram) return c;
    // A key that somebody has taken since keeps the backup's row out of the table.
    if (retoma && c.diferentes > 0) GuardaDiferentes(ctx_, tabela_, chave_, alteradas_);
    Avisa(TFalha::ConteudoDiferente,
          "Tabela " + tabela_ + ": conteúdo diferente de " + backup_ + ": " +
              (c.colunas.empty() ? std::to_string(c.diferentes) + " registros" : Junta(c.colunas, ", ")) + contagem);
    return c;
}

/// A second try for what could not be created on the empty table; its failure has been reported.
void TReconstrucao::CompletaIndices() {
    ctx_.dm.Atualiza.CriaIndicePrimario(nome_, false);
    ctx_.dm.Atualiza.CriaIndiceSecundarios(nome_);
}

/// What an earlier try has given back, the table itself would ask for by now.
void TReconstrucao::DevolveObjetos() {
    const auto devolucoes = Devolucoes();
    if (devolucoes.empty()) return;
    const auto indices = ctx_.Conexao().Indices(tabela_);
    const auto devolvidos = ComandosDeDevolucao(ctx_, nome_);
    for (const auto& comando : devolucoes) {
        const bool existe = std::ranges::any_of(indices, [&](const TIndice& indice) {
            return comando.find("index " + ctx_.Dialeto().Identificador(indice.nome) + " on ") != std::string::npos;
        });
        if (existe || std::ranges::find(devolvidos, comando) != devolvidos.end()) continue;
        TResultado devolvido = ctx_.dm.Executa(comando);
        if (!devolvido) devolvido = ctx_.dm.Executa(comando);
        if (!devolvido)
            ctx_.Tela().Erro(
                TErroDaExecucao::NosDois(devolvido.Erro().Dados(), tabela_, comando,
                                         "Tabela " + tabela_ + ": " + comando + ": " + devolvido.Mensagem()));
    }
    GuardaDevolucoes({});
}

std::vector<std::string> TReconstrucao::ColunasSoDe(const std::string& uma, const std::string& outra) {
    const auto daOutra = ctx_.Conexao().Colunas(outra);
    std::vector<std::string> nomes;
    for (const auto& coluna : ctx_.Conexao().Colunas(uma))
        if (!ColunaDeNome(daOutra, coluna.nome)) nomes.push_back(coluna.nome);
    return nomes;
}

void TReconstrucao::RelataColunas(const std::vector<std::string>& ficaram) {
    if (ficaram.empty()) return;
    Avisa(TFalha::SobraNoBackup,
          "Tabela " + tabela_ + ": colunas que ficaram só em " + backup_ + ": " + Junta(ficaram, ", "));
}

void TReconstrucao::Termina(bool confere) {
    CompletaIndices();
    DevolveObjetos();
    const auto ficaram = ColunasSoDe(backup_, tabela_);
    RelataColunas(ficaram);
    if (!ctx_.estado.falhouApagar) MoveMarcadores(ctx_, tabela_);
    const bool encerrada = !ctx_.estado.falhouApagar && EncerraReconstrucao(ctx_, tabela_);
    // Whole again but still with -1: the next run saves it anew, with what is entered until then.
    if (!encerrada && confere && ficaram.empty()) MarcaGuardada(ctx_, tabela_);
}

void Nova(TContexto& ctx, std::string_view tabela) {
    ctx.tabelaAtual = Maiusculas(tabela);
    ctx.acaoAtual = "Criar Tabela";
    ctx.estado.falhouApagar = false;
    TReconstrucao(ctx, tabela).Executa();
}

}  // namespace wkd
