#include "run/Atualizacao.h"

#include <algorithm>
#include <chrono>
#include <thread>

#include "ArquivosSistema.h"
#include "Relatorio.h"
#include "context/CargaDoPacote.h"
#include "context/MarcaDeAnalise.h"
#include "copy/CopiaDeLinhas.h"
#include "corrections/Correcoes.h"
#include "decision/DecisaoDaTabela.h"
#include "layout/AtualizaSistema.h"
#include "layout/Preambulo.h"
#include "passes/CamposPersonalizados.h"
#include "passes/CamposTexto.h"
#include "passes/Passes.h"
#include "process/Interrupcao.h"
#include "run/PassoDaTabela.h"
#include "run/UsuariosOnline.h"
#include "values/Texto.h"
#include "values/TextoDeData.h"

namespace wkd {

namespace {

struct TNomeDoPasso {
    std::string_view nome, paraLer;
};
struct TPasso {
    std::string_view titulo;
    TNomeDoPasso nome;
    void (*executa)(TContexto&);
};

// The steps by their names, in their order; the tables come behind the first ones.
constexpr TNomeDoPasso kAntes[] = {{"AjustaCamposStringMaior2000", "Textos de 2000 caracteres ou mais"},
                                   {"Tabelas do dicionário", "Tabelas do dicionário"},
                                   {"QuerysAnteriores", "Correções antes das tabelas"},
                                   {"VerificaDuplicidadeSarquivo", "Tabelas registradas duas vezes"},
                                   {"AtualizaSistema", "Tabelas do sistema"}};
constexpr TNomeDoPasso kDosArquivos[] = {{"AtualizaRelatorio", "Relatórios do pacote"},
                                         {"AtualizaArquivosSistema", "Arquivos do pacote"}};
constexpr TNomeDoPasso kCorrecoes = {"QuerysPosteriores", "Correções depois das tabelas"};
constexpr TPasso kPassos[] = {
    {"Querys : Estrutura de Tabelas", {"ApagaAtributosOrfaos", "Estrutura de tabelas"}, ApagaAtributosOrfaos},
    {"Querys : Valor Padrão", {"AtualizaValorPadrao", "Valores padrão"}, AtualizaValorPadrao},
    {"Querys : Atualiza Lookup", {"AtualizaLookup", "Consultas entre tabelas"}, AtualizaLookup},
    {"Querys : Atualiza Lookup Fisico",
     {"AtualizaLookupFisico", "Colunas preenchidas de outras tabelas"},
     AtualizaLookupFisico},
    {"Querys : Atualiza Campos Personalizados",
     {"AtualizaCamposPersonalizados", "Campos personalizados"},
     AtualizaCamposPersonalizados},
    {"Querys : Atualiza Campo Texto",
     {"AtualizaCamposVarCharparaNvarChar", "Campos de texto"},
     AtualizaCamposVarCharparaNvarChar},
    {"Querys : Verifica Indice Primario", {"verificaIndicesPrimarios", "Índices primários"}, verificaIndicesPrimarios},
    {"Querys : Dicionario de Tabelas", {"Dicionario_tabelas", "Dicionário de tabelas"}, Dicionario_tabelas},
};

bool DosIndices(const std::filesystem::path& arquivo) {
    const std::string tabela = Maiusculas(arquivo.stem().string());
    return tabela == "SINDSEC" || tabela == "SINDSECA";
}

}  // namespace

TAtualizacao::TAtualizacao(TDataModulo& dm, const TOpcoes& opcoes, TEstado& estado) : ctx_{dm, opcoes, estado, {}, {}} {
    dm.Atualiza.SetPastaComandos(opcoes.pastaCorrente);
}

TFimDaAtualizacao TAtualizacao::Executa() {
    TFimDaAtualizacao fim = TFimDaAtualizacao::Encerrada;
    ctx_.Tela().RetiraErros();
    try {
        TInterrupcao::Confere();
        Identifica();
        ctx_.linhasPorCommit = LinhasPorCommit(ctx_);
        ExigeEscrita();
        trava_.emplace(ctx_.dm.SQLConnection1);
        Avisa(ctx_, AvisosDoDriver(ctx_.Conexao()));
        TPastaDeTrabalho pasta(ctx_.opcoes.temporaria);
        fim = Corre(pasta);
    } catch (const std::exception& erro) {
        ctx_.Tela().Erro(TErroDaExecucao::NaCaixa(ErroDe(erro)));
    } catch (const TInterrompida&) {
        fim = TFimDaAtualizacao::Interrompida;
        ctx_.Tela().Erro(
            TErroDaExecucao::NosDois({.mensagem = "Interrompida: rode de novo", .falha = TFalha::Interrompida}, "",
                                     "Sinal " + std::to_string(TInterrupcao::Sinal())));
    }
    trava_.reset();
    ctx_.evidencia.fim = Agora();
    ctx_.evidencia.termino = fim;
    if (fim != TFimDaAtualizacao::Concluida) ctx_.evidencia.naoRodaram = NaoRodaram();
    RecolheErros();
    return fim;
}

/// From the loss of the connection to its reopening, all that fails fails of it.
void TAtualizacao::RecolheErros() {
    auto erros = ctx_.Tela().RetiraErros();
    reaberturas_.push_back(erros.size());
    std::size_t i = 0;
    for (const std::size_t ate : reaberturas_)
        for (bool perdida = false; i < ate; ++i) {
            erros[i].consequencia = perdida;
            perdida = perdida || erros[i].erro.conexaoPerdida || SemConexao(erros[i].erro.falha);
        }
    ctx_.evidencia.erros = std::move(erros);
}

void TAtualizacao::Identifica() {
    TEvidencia& evidencia = ctx_.evidencia;
    evidencia.inicio = Agora();
    evidencia.alias = ctx_.opcoes.alias;
    evidencia.pacote = ctx_.opcoes.pacote.string();
    evidencia.banco = ctx_.dm.SQLConnection1.RetornaDadosConexao().Texto();
    evidencia.servidor = ServidorVivo(ctx_.Conexao());
}

void TAtualizacao::ExigeEscrita() {
    if (ctx_.Conexao().SoLeitura())
        throw TErroConhecido(TFalha::BancoSoLeitura,
                             "O banco de dados está marcado como só de leitura; nada foi feito. Desmarque-o (Firebird: "
                             "gfix -mode read_write; SQL Server: ALTER DATABASE ... SET READ_WRITE) e rode de novo.");
}

void TAtualizacao::GaranteConexao() {
    if (!ctx_.Conexao().Perdida() && trava_->Nossa()) return;
    constexpr int kTentativas = 3;
    TErro motivo{.mensagem = "A conexão com o banco de dados foi perdida.", .falha = TFalha::Conexao};
    ctx_.Tela().Erro(TErroDaExecucao::NosDois(motivo, "", "Conexão"));
    for (int vez = 0; vez < kTentativas; ++vez) {
        std::this_thread::sleep_for(vez * ctx_.opcoes.pausaDeReconexao);
        try {
            return Reabre();
        } catch (const TErroBanco& erro) {
            motivo = erro.Dados();
        }
    }
    motivo.mensagem.insert(0,
                           "A conexão com o banco de dados foi perdida e não pôde ser reaberta. Rode de novo quando o "
                           "servidor responder: a próxima execução continua desta.\n");
    motivo.falha = TFalha::Conexao;
    throw TErroConhecido(std::move(motivo));
}

/// What the server did with the last commit is not known: all that was read is read again.
void TAtualizacao::Reabre() {
    TDataModulo& dm = ctx_.dm;
    trava_->Garante();
    if (ctx_.Conexao().Perdida()) {
        const std::string perdida = ctx_.Conexao().Numero();
        ctx_.Conexao().Open();
        ctx_.Conexao().Derruba(perdida);
    }
    dm.AtualizaListaDeTabelas();
    if (const bool aberto = dm.SarquivoVelho.Active(); aberto) {
        dm.SarquivoVelho.Close();
        dm.SatribVelho.Close();
        LeDicionarioGravado(ctx_);
    }
    reaberturas_.push_back(ctx_.Tela().Erros().size());
    ctx_.Tela().Memo1("Conexão com o banco de dados reaberta: a atualização segue com o próximo passo.");
}

TFimDaAtualizacao TAtualizacao::Corre(TPastaDeTrabalho& pasta) {
    if (!TemDicionario(ctx_)) return TFimDaAtualizacao::Encerrada;
    Passo("AjustaCamposStringMaior2000", [this] { AjustaCamposStringMaior2000(ctx_); });
    Passo("Tabelas do dicionário", [this] { AtualizaTabelasDoDicionario(ctx_.dm); });
    Inicia();
    if (!Confirma()) return TFimDaAtualizacao::Encerrada;
    AtualizaTabelaSistema();
    if (!Desempacota(ctx_, pasta)) return TFimDaAtualizacao::Encerrada;
    CarregaDicionarios(ctx_, pasta);
    if (ctx_.estado.usuariosOnline) Passo("QuerysAnteriores", [this] { QuerysAnteriores(ctx_); });

    Seleciona(ctx_);
    GaranteConexao();
    ctx_.abertas = ReconstrucoesAbertas(ctx_.dm);
    Passo("VerificaDuplicidadeSarquivo", [this] { VerificaDuplicidadeSarquivo(ctx_); });
    GaranteConexao();
    LeDicionarioGravado(ctx_);
    DesconsideraVersoesNegativas(ctx_);
    if (!LiberadaPelosUsuarios()) return TFimDaAtualizacao::Encerrada;
    ValidaNulos();
    Passo("AtualizaSistema", [&] { adiados_ = AtualizaSistema(ctx_.dm, pasta, ctx_.abertas); });
    ctx_.Tela().Memo1("Tabelas do sistema............OK!");

    Seleciona(ctx_);
    AtualizaTabelas();
    RelatoriosEArquivos(pasta);
    PassosFinais();
    GaranteConexao();
    Encerra();
    return TFimDaAtualizacao::Concluida;
}

void TAtualizacao::Inicia() {
    GaranteConexao();
    ctx_.dm.Reconecta();
    inicio_ = Agora();
    ctx_.Tela().Memo1("----------------------------------------------------------");
    ctx_.Tela().Memo1("");
    ctx_.Tela().Memo1("Iniciando atualização das tabelas: " + FormataDataHora(inicio_, "dd-mm hh:mm"));
}

bool TAtualizacao::Confirma() {
    if (Maiusculas(Apara(ctx_.opcoes.alias)) != "WKD") return true;
    constexpr std::string_view kPergunta = "Deseja realmente atualizar a base de dados da WKD Software? certeza mesmo?";
    const bool sim = ctx_.Tela().Confirmacao(kPergunta, false);
    const TErro recusa{.mensagem = std::string(kPergunta) + " Não", .falha = TFalha::NaoConfirmada};
    if (!sim) ctx_.Tela().Guarda(TErroDaExecucao::NaLista(recusa, ""));
    return sim;
}

bool TAtualizacao::LiberadaPelosUsuarios() {
    if (VerificaAtualizacao(ctx_) || ContaUsuariosOnline(ctx_.Conexao()).value_or(0) == 0) return true;
    ctx_.Tela().Erro(
        TErroDaExecucao::NaCaixa({.mensagem = "Esta atualização requer que todos os usuários fechem o sistema.",
                                  .falha = TFalha::UsuariosConectados}));
    return false;
}

/// A hook: the null-column validation itself validates nothing.
void TAtualizacao::ValidaNulos() {
    if (MarcadaParaNaoCriar()) {
        ctx_.Tela().Memo1("Verificando nulos.............Skiped!");
    } else if (!ctx_.estado.pulaNulos) {
        TOcupado ocupado(ctx_.Tela(), "Validando campos nulos");
    }
}

void TAtualizacao::AtualizaTabelas() {
    TClientDataSet& tabelas = ctx_.dm.SArquivoNovo;
    IBarra& barra = ctx_.Tela().PbGeral();
    barra.Define(0, static_cast<int>(tabelas.RecordCount()), 10, 0);
    CriaTini();
    TMarcasDeAnalise marcas(ctx_);
    auto dicionario = ctx_.dm.Atualiza.Dicionario().Lembra();
    ctx_.indicesAdiados = std::ranges::any_of(adiados_, DosIndices);
    const auto protege = [this](auto&& marca) {
        try {
            marca();
        } catch (const std::exception& erro) {
            Reporta("Marcas de análise", erro);
        }
    };
    if (ctx_.opcoes.todas || ctx_.opcoes.completo) protege([&] { marcas.Antecipa(TabelasExistentes()); });
    for (tabelas.First(); !tabelas.Eof(); tabelas.Next()) {
        TabelaAtual(marcas);
        barra.Posicao(barra.Posicao() + 1);
    }
    GaranteConexao();
    protege([&] { marcas.Conclui(); });
    dicionario.reset();
    Passo("AtualizaSistema", [this] { RecarregaAdiados(ctx_.dm, adiados_); });
    if (!ctx_.semIndices.empty()) Passo("Índices", [this] { CompletaIndices(); });
    ctx_.Tela().Memo1("Finalizada as atualizações das tabelas em: " + FormataDataHora(Agora(), "dd/mm hh:mm"));
    barra.Posicao(0);
    ctx_.Tela().LblGeral("Parado.");
}

/// What a run leaves for the next one is kept there: where the package brings it, it comes before the other tables.
void TAtualizacao::CriaTini() {
    if (ctx_.dm.ExisteTabela("TINI") || !ctx_.dm.SArquivoNovo.Locate("NOME_ARQUIVO", {"TINI"})) return;
    TMarcasDeAnalise semTini(ctx_);
    TabelaAtual(semTini);
}

/// Of the tables whose turn came before their indexes were in the dictionary.
void TAtualizacao::CompletaIndices() {
    TMarcasDeAnalise marcas(ctx_);
    for (const auto& [tabela, falhou] : ctx_.semIndices) RefazIndices(ctx_, marcas, tabela, falhou);
    marcas.Conclui();
}

/// The tables of the package that the database has.
std::vector<std::string> TAtualizacao::TabelasExistentes() {
    std::vector<std::string> nomes;
    TClientDataSet& tabelas = ctx_.dm.SArquivoNovo;
    for (tabelas.First(); !tabelas.Eof(); tabelas.Next())
        if (std::string nome(Apara(tabelas.Texto("nome_arquivo"))); ctx_.dm.ExisteTabela(nome))
            nomes.push_back(std::move(nome));
    return nomes;
}

void TAtualizacao::TabelaAtual(TMarcasDeAnalise& marcas) {
    const std::string tabela = ctx_.dm.SArquivoNovo.Texto("nome_arquivo");
    GaranteConexao();
    trava_->Atividade(tabela);
    try {
        TPassoDaTabela(ctx_, marcas).Executa();
    } catch (const std::exception& erro) {
        ctx_.Tela().Erro(TErroDaExecucao::NosDois(ErroDe(erro), tabela, "Atualizar tabela",
                                                  "Tabela: " + tabela + " - " + erro.what()));
        SemDecisao(std::string(Apara(tabela)));
    }
}

/// Registers a table whose step was over before it was decided what to do.
void TAtualizacao::SemDecisao(const std::string& tabela) {
    auto& tabelas = ctx_.evidencia.tabelas;
    if (!tabelas.empty() && tabelas.back().nome == tabela) return;
    TTabelaRegistrada registrada;
    registrada.nome = tabela;
    registrada.motivo = "o erro veio antes da decisão";
    registrada.desfecho = TDesfecho::NaoFeito;
    tabelas.push_back(std::move(registrada));
}

void TAtualizacao::RelatoriosEArquivos(const TPastaDeTrabalho& pasta) {
    if (MarcadaParaNaoCriar()) {
        ctx_.Tela().Memo1("Atualizando Relatórios........Skiped!");
        ctx_.Tela().Memo1("Atualizando Arquivos..........Skiped!");
        for (const auto& passo : kDosArquivos) NaoSeAplica(passo.nome);
        return;
    }
    Passo(kDosArquivos[0].nome, [&] { AtualizaRelatorio(ctx_.dm, pasta); });
    Passo(kDosArquivos[1].nome, [&] { AtualizaArquivosSistema(ctx_.dm, pasta); });
}

void TAtualizacao::PassosFinais() {
    Passo(kCorrecoes.nome, [this] { QuerysPosteriores(ctx_); });
    for (const TPasso& passo : kPassos) {
        ctx_.Tela().ProcessaMensagens();
        ctx_.Tela().Memo1(passo.titulo);
        Passo(passo.nome.nome, [&] { passo.executa(ctx_); });
    }
}

void TAtualizacao::Encerra() {
    const TDataHora fim = Agora();
    ctx_.Tela().Memo1("Final da Atualização: " + FormataDataHora(fim, "dd-mm hh:mm"));
    ctx_.Tela().Memo1("Tempo de Atualização: " + FormataDuracao(inicio_, fim));
}

/// What reports an error and ends by itself has done a part; what raises has not come to its end.
template <class F>
void TAtualizacao::Passo(std::string_view nome, F&& passo) {
    const auto inicio = std::chrono::steady_clock::now();
    GaranteConexao();
    trava_->Atividade(nome);
    const std::size_t numero = ctx_.evidencia.passos.size(), erros = ctx_.Tela().Erros().size();
    ctx_.evidencia.passos.push_back({.nome = std::string(nome)});
    const auto acaba = [&](TDesfecho desfecho, TErro erro) {
        TPassoRegistrado& registrado = ctx_.evidencia.passos[numero];
        registrado.segundos = std::chrono::duration<double>(std::chrono::steady_clock::now() - inicio).count();
        registrado.desfecho = desfecho;
        registrado.falha = erro.falha;
        registrado.erro = std::move(erro.mensagem);
    };
    try {
        ctx_.Tela().ProcessaMensagens();
        passo();
        acaba(ctx_.Tela().Erros().size() > erros ? TDesfecho::PelaMetade : TDesfecho::Feito, {});
    } catch (const std::exception& erro) {
        acaba(TDesfecho::NaoFeito, ErroDe(erro));
        Reporta(nome, erro);
    }
}

void TAtualizacao::NaoSeAplica(std::string_view nome) {
    ctx_.evidencia.passos.push_back({.nome = std::string(nome), .desfecho = TDesfecho::NaoSeAplica});
}

std::vector<std::string> TAtualizacao::NaoRodaram() const {
    std::vector<std::string> faltam;
    const auto confere = [&](std::string_view nome, const auto& registrados) {
        const auto igual = [&](const auto& registrado) { return IgualSemCaixa(registrado.nome, nome); };
        if (std::ranges::none_of(registrados, igual)) faltam.emplace_back(nome);
    };
    for (const auto& passo : kAntes) confere(passo.nome, ctx_.evidencia.passos);
    for (const auto& tabela : ctx_.novo.Tabelas()) confere(tabela.nome, ctx_.evidencia.tabelas);
    for (const auto& passo : kDosArquivos) confere(passo.nome, ctx_.evidencia.passos);
    confere(kCorrecoes.nome, ctx_.evidencia.passos);
    for (const TPasso& passo : kPassos) confere(passo.nome.nome, ctx_.evidencia.passos);
    return faltam;
}

void TAtualizacao::Reporta(std::string_view acao, const std::exception& erro) {
    ctx_.Tela().Erro(TErroDaExecucao::NosDois(ErroDe(erro), "", acao, std::string(acao) + ": " + erro.what()));
}

std::vector<std::string_view> PassosFinais() {
    std::vector<std::string_view> nomes;
    for (const TPasso& passo : kPassos) nomes.push_back(passo.nome.nome);
    return nomes;
}

std::string PassoParaLer(std::string_view nome) {
    std::vector<TNomeDoPasso> todos(std::begin(kAntes), std::end(kAntes));
    todos.insert(todos.end(), std::begin(kDosArquivos), std::end(kDosArquivos));
    todos.push_back(kCorrecoes);
    for (const TPasso& passo : kPassos) todos.push_back(passo.nome);
    const auto achado = std::ranges::find(todos, nome, &TNomeDoPasso::nome);
    return std::string(achado == todos.end() ? nome : achado->paraLer);
}

bool TAtualizacao::MarcadaParaNaoCriar() const { return std::filesystem::exists(ctx_.opcoes.marcaNaoCria); }

}  // namespace wkd
