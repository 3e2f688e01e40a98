#include <QSysInfo>
#include <array>
#include <iostream>
#include <nlohmann/json.hpp>

#include "BancoVazio.h"
#include "Esquema.h"
#include "Explicacao.h"
#include "PacoteDeSuporte.h"
#include "RelatosSemValores.h"
#include "commands/Comandos.h"
#include "commands/LinhaDoTerminal.h"
#include "commands/PreencheDados.h"
#include "firebird/ConexaoFirebird.h"
#include "package/Caminho.h"
#include "package/TravaDoBanco.h"
#include "process/EscritaSegura.h"
#include "process/Interrupcao.h"
#include "process/Sha256.h"
#include "report/Historico.h"
#include "report/LogDaExecucao.h"
#include "report/PlanoEmTexto.h"
#include "report/RelatorioDaExecucao.h"
#include "server/Vigia.h"
#include "values/Texto.h"
#include "values/TextoDeData.h"

namespace wkd {

namespace {

namespace fs = std::filesystem;
using TJson = nlohmann::ordered_json;

constexpr std::size_t kBytesDoLog = 1 << 20;
constexpr std::size_t kRelatorios = 5;

/// The keys of an alias that the program knows, but for its password.
constexpr std::array kChaves = {"Alias",           "TipoBanco", "Hostname", "Path",        "DataBase",
                                "CAMINHO",         "BANCO",     "LOCAL",    "User_Name",   "TipoAutenticacao",
                                "CharacterSet",    "Driver",    "Encrypt",  "TempoLimite", "TrustServerCertificate",
                                "LinhasPorCommit", "RELATORIO"};

std::string EmTexto(const TJson& json) { return json.dump(2, ' ', false, TJson::error_handler_t::replace) + "\n"; }

/// A value that holds the password, or says that it holds one, does not go along.
TJson Configuracao(const TAliases& aliases, const std::string& alias) {
    const TArquivoIni ini(aliases.Caminho());
    const std::string senha = aliases.CarregaAlias(alias).senha;
    TJson chaves = TJson::object();
    for (const char* chave : kChaves) {
        const auto valor = ini.Le(alias, chave);
        if (!valor) continue;
        const std::string maiusculo = Maiusculas(*valor);
        const bool segredo = (!senha.empty() && valor->find(senha) != std::string::npos) ||
                             maiusculo.find("PWD") != std::string::npos || maiusculo.find("PASS") != std::string::npos;
        chaves[chave] = segredo ? "(não vai: pode conter a senha)" : TextoDeBytes(*valor);
    }
    return {{"formato", kFormatoJson},
            {"arquivo", TextoDoCaminho(aliases.Caminho())},
            {"alias", alias},
            {"chaves", chaves}};
}

/// What the connection's server, its database and the client library are.
TJson EmJson(const TCapacidades& capacidades, TTipoBanco banco) {
    TJson recursos = TJson::object();
    if (banco == TTipoBanco::tbInterbase)
        for (const auto& [nome, tem] : RecursosParaLer(capacidades)) recursos[std::string(nome)] = tem;
    return {{"servidor", capacidades.servidor},
            {"cliente", capacidades.cliente},
            {"estrutura", TextoDaVersao(capacidades.estrutura)},
            {"estruturaDoServidor", TextoDaVersao(capacidades.estruturaDoServidor)},
            {"pagina", capacidades.pagina},
            {"dialeto", capacidades.dialeto},
            {"recursos", recursos}};
}

/// Makes a bundle part by part. What one part fails of keeps no other out.
class TSuporte {
  public:
    TSuporte(const TAmbiente& ambiente, const TPedeSuporte& pedido)
        : ambiente_(ambiente), pedido_(pedido), pacote_(pedido.alias, ambiente.temporaria) {}

    TPacoteDeSuporte& Junta();
    bool Inteiro() const { return inteiro_; }

  private:
    void Parte(const std::string& nome, const std::function<void()>& faz);
    void Falhou(const std::string& nome, const TErro& erro);
    void DoBanco();
    void Abre(TDataModulo& dm, TEstado& estado);
    void Conferencia(TDataModulo& dm);
    void Plano(TDataModulo& dm, const TEstado& estado);
    void Versoes();
    void Relatos();
    fs::path PacoteDoPlano();

    const TAmbiente& ambiente_;
    const TPedeSuporte& pedido_;
    TPacoteDeSuporte pacote_;
    TMascara mascara_;
    TTelaDoConsole tela_;
    TJson versoes_ = TJson::object();  // what the connection tells
    bool inteiro_ = true;
};

TPacoteDeSuporte& TSuporte::Junta() {
    const TAliases aliases(LocalizaIni(ambiente_.locais));
    pacote_.Grava("configuracao.json", "o alias em WKD.ini, sem a senha",
                  EmTexto(Configuracao(aliases, pedido_.alias)));
    for (const auto& execucao : Historico(ambiente_.pastaPrograma, pedido_.alias))
        Parte("nomes", [&] { ConheceTabelas(LeArquivoInteiro(execucao.relatorio), mascara_); });
    Parte("banco", [&] { DoBanco(); });
    Parte("versoes", [&] { Versoes(); });
    Relatos();
    return pacote_;
}

void TSuporte::Parte(const std::string& nome, const std::function<void()>& faz) {
    try {
        faz();
    } catch (const std::exception& erro) {
        Falhou(nome, ErroDe(erro));
    }
}

void TSuporte::Falhou(const std::string& nome, const TErro& erro) {
    inteiro_ = false;
    std::string causa(NomeDaFalha(erro.falha));
    if (erro.codigoNativo != 0) causa += ", código " + std::to_string(erro.codigoNativo);
    if (!erro.sqlstate.empty()) causa += ", SQLSTATE " + erro.sqlstate;
    pacote_.Falta(nome, causa + ": " + Troca(mascara_.Texto(erro.mensagem), "\n", " "));
}

void TSuporte::Abre(TDataModulo& dm, TEstado& estado) {
    const TDadosDoAlias dados = PreencheDados(dm, estado, pedido_.alias);
    if (dm.SQLConnection1.Connected()) return;
    EscreveNosErros(ExplicaConexao(*dados.erro));
    throw TErroConhecido(*dados.erro);
}

void TSuporte::DoBanco() {
    TDataModulo dm(TAliases(LocalizaIni(ambiente_.locais)), tela_);
    TEstado estado;
    THBNConnection& conexao = dm.SQLConnection1;
    const TVigia vigia(conexao, TPrazos::DoAlias(conexao.Aliases(), pedido_.alias),
                       [this](std::string_view texto) { tela_.SemResposta(texto); });
    Abre(dm, estado);
    versoes_["servidor"] = conexao.VersaoServidor();
    versoes_["tipoBanco"] = TipoBancoToStr(conexao.TipoBanco());
    versoes_["capacidades"] = EmJson(Dialeto(conexao).Capacidades(), conexao.TipoBanco());
    Parte("esquema", [&] {
        pacote_.Grava(std::string(kEsquema),
                      "tabelas, colunas, chaves, índices e seus comandos; nomes de visões, gatilhos, geradores",
                      EsquemaEmJson(conexao, mascara_));
    });
    Parte("dicionario", [&] {
        for (const auto& guardada : GuardaDicionario(conexao, pacote_.Pasta()))
            pacote_.Junta(guardada.arquivo, "registros de " + guardada.nome + ": " +
                                                ComMilhares(static_cast<std::int64_t>(guardada.registros)) +
                                                (guardada.nome == "TINI" ? ", só as marcas do atualizador" : ""));
    });
    Parte("confere", [&] { Conferencia(dm); });
    Parte("plano", [&] { Plano(dm, estado); });
    Parte(std::string(kBancoVazio), [&] {
        const auto feito = CriaServidorDeBackup(conexao)->FazBackupDoEsquema(
            pacote_.Pasta() / kBancoVazio, [](const TProgresso&) { TInterrupcao::Confere(); });
        if (feito)
            pacote_.Junta(std::string(kBancoVazio), "o esquema como o servidor o conhece, com fontes e sem registros");
        else
            pacote_.Falta(std::string(kBancoVazio),
                          "só um Firebird copia o esquema sem os registros; veja esquema.json");
    });
}

void TSuporte::Conferencia(TDataModulo& dm) {
    const auto desvios = ConfereDicionario(dm, ambiente_.pastaPrograma);
    pacote_.Grava("confere.json", "em que o banco difere do dicionário", DesviosEmJson(pedido_.alias, desvios));
}

/// That of the command line, else that of the last run, while it is still there.
fs::path TSuporte::PacoteDoPlano() {
    if (!pedido_.pacote.empty()) return pedido_.pacote;
    const auto ultima = UltimaExecucao(ambiente_.pastaPrograma, pedido_.alias);
    return ultima ? CaminhoDoTexto(ultima->pacote) : fs::path();
}

void TSuporte::Plano(TDataModulo& dm, const TEstado& estado) {
    const fs::path pacote = PacoteDoPlano();
    if (pedido_.pacote.empty() && !fs::is_regular_file(pacote))
        return pacote_.Falta("plano", "nenhum pacote de atualização à mão; dê-o com --pacote PACOTE.zip");
    const auto plano = Planeja(dm, OpcoesDoComando(ambiente_, pedido_.alias, pacote, {}), estado);
    if (!plano) {
        const auto erros = tela_.RetiraErros();
        for (const auto& erro : erros) Falhou("plano", erro.erro);
        if (erros.empty()) Falhou("plano", {.mensagem = "a atualização não seria feita"});
        return;
    }
    versoes_["pacote"] = {{"nome", NomeDoArquivo(pacote)},
                          {"tamanho", fs::file_size(pacote)},
                          {"sha256", Sha256DoArquivo(pacote, [](std::uintmax_t) { TInterrupcao::Confere(); })}};
    const TPlano semExemplos = SemExemplos(*plano);
    pacote_.Grava("plano.json", "o que a atualização faria, sem exemplos de valores", PlanoEmJson(semExemplos));
    pacote_.Grava("plano.txt", "o mesmo, para ler", PlanoEmTexto(semExemplos));
}

void TSuporte::Versoes() {
    TJson json = {{"formato", kFormatoJson},
                  {"programa", "AtualizaWKD " + std::string(kVersao)},
                  {"quando", FormataDataHora(Agora(), "dd/mm/yyyy hh:mm:ss")},
                  {"sistema", QSysInfo::prettyProductName().toStdString() + ", " +
                                  QSysInfo::currentCpuArchitecture().toStdString()},
                  {"clienteFirebird", VersaoDoClienteFirebird()},
                  {"alias", pedido_.alias}};
    json.update(versoes_);
    pacote_.Grava("versoes.json", "programa, sistema, servidor e o que ele sabe fazer, pacote do plano", EmTexto(json));
}

void TSuporte::Relatos() {
    const auto execucoes = Historico(ambiente_.pastaPrograma, pedido_.alias);
    pacote_.Grava("historico.json", "as atualizações do alias", HistoricoEmJson(execucoes));
    for (std::size_t i = 0; i < std::min(kRelatorios, execucoes.size()); ++i) {
        const fs::path arquivo = execucoes[i].relatorio;
        Parte(NomeDoArquivo(arquivo), [&] {
            pacote_.Grava("relatorio-" + NomeDoArquivo(arquivo), "relatório de uma atualização, sem valores",
                          RelatorioSemValores(LeArquivoInteiro(arquivo), mascara_));
        });
    }
    Parte("log", [&] {
        TLogDaExecucao log(ambiente_.pastaPrograma / "AtualizaWKD.log", std::string::npos);
        log.Carrega();
        pacote_.Grava("log.txt", "o log das execuções, o mais novo primeiro, sem valores",
                      LogSemValores(log.Texto(), mascara_, kBytesDoLog));
    });
}

fs::path ArquivoProposto(const TAmbiente& ambiente, const std::string& alias) {
    return ambiente.pastaPrograma / ("Suporte_" + NomeNoDisco(alias) + "_" + FormataDataHora(Agora(), "ddmmyy") + "_" +
                                     wkd::Troca(FormataDataHora(Agora(), "hh:mm:ss"), ":", "") + ".zip");
}

/// What an exception of a command means for whoever called it.
TCodigoDeSaida ComCodigo(const std::function<TCodigoDeSaida()>& trabalho) {
    try {
        return trabalho();
    } catch (const TErroConfiguracao& erro) {
        EscreveNosErros(erro.what());
        return TCodigoDeSaida::SemConexao;
    } catch (const std::exception& erro) {
        EscreveNosErros(ExplicaFalha(erro));
        return TCodigoDeSaida::Encerrada;
    }
}

}  // namespace

TCodigoDeSaida ComandoSuporte(const TAmbiente& ambiente, const TPedeSuporte& pedido) {
    return ComCodigo([&] {
        const fs::path arquivo =
            pedido.arquivo.empty() ? ArquivoProposto(ambiente, pedido.alias) : fs::absolute(pedido.arquivo);
        ExigeNomeLivre(arquivo);
        TSuporte suporte(ambiente, pedido);
        TPacoteDeSuporte& pacote = suporte.Junta();
        std::cout << "Vai no pacote de suporte de " << pedido.alias << ", sem registro de cliente nem senha:\n"
                  << pacote.Lista() << std::flush;
        for (const auto& falta : pacote.Faltas()) EscreveNosErros("Falta: " + falta);
        pacote.Conclui(arquivo);
        std::cout << "Gravado: " << TextoDoCaminho(arquivo) << " (" << TamanhoEmTexto(fs::file_size(arquivo))
                  << "). Leia o LEIAME.txt que está nele e envie-o a quem ajuda." << std::endl;
        return suporte.Inteiro() ? TCodigoDeSaida::Sucesso : TCodigoDeSaida::ComErros;
    });
}

TCodigoDeSaida ComandoReproduz(const TAmbiente& ambiente, const TPedeReproduz& pedido) {
    return ComCodigo([&] {
        const TPastaPassageira pasta(ambiente.temporaria);
        AbrePacoteDeSuporte(pedido.arquivo, pasta.Caminho());
        THBNConnection conexao{TAliases(LocalizaIni(ambiente.locais))};
        conexao.SetAlias(pedido.alias);
        const TReproduzido feito =
            ReproduzBanco(conexao, pasta.Caminho(), [](const TProgresso&) { TInterrupcao::Confere(); });
        for (const auto& recusado : feito.recusados) EscreveNosErros("Aviso: não foi feito: " + recusado);
        if (feito.soTabelas)
            EscreveNosErros(
                "Aviso: o banco tem só tabelas, chaves, índices e restrições; visões, gatilhos e procedimentos, cujos "
                "nomes estão em esquema.json, não vieram no pacote.");
        std::cout << "Banco vazio feito: " << feito.banco << ", com " << feito.tabelas << " tabelas e "
                  << ComMilhares(static_cast<std::int64_t>(feito.registros)) << " registros de dicionário.\n"
                  << "Agora: AtualizaWKD --plano \"" << pedido.alias << "\" PACOTE.zip" << std::endl;
        return feito.recusados.empty() ? TCodigoDeSaida::Sucesso : TCodigoDeSaida::ComErros;
    });
}

}  // namespace wkd
