#include "Ensaio.h"

#include <algorithm>
#include <chrono>

#include "Backup.h"
#include "Prova.h"
#include "context/CargaDoPacote.h"
#include "firebird/ServicosFirebird.h"
#include "package/Caminho.h"
#include "package/Trava.h"
#include "plan/Plano.h"
#include "process/EscritaSegura.h"
#include "process/Interrupcao.h"
#include "run/Atualizacao.h"
#include "run/UsuariosOnline.h"
#include "screen/Tela.h"
#include "values/Texto.h"
#include "values/TextoDeData.h"

namespace wkd {

namespace {

namespace fs = std::filesystem;

double Segundos(const std::function<void()>& trabalho) {
    const auto inicio = std::chrono::steady_clock::now();
    trabalho();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - inicio).count();
}

/// Tells what the run is at.
class TTelaDoEnsaio : public TTelaSilenciosa {
  public:
    explicit TTelaDoEnsaio(const TAcompanha& acompanha) : acompanha_(acompanha) {}
    void LblAtual(std::string_view texto) override { acompanha_({"Ensaiando: " + std::string(texto), -1}); }
    void LblGeral(std::string_view texto) override { LblAtual(texto); }
    bool Confirmacao(std::string_view, bool) override { return true; }  // it is a copy

  private:
    const TAcompanha& acompanha_;
};

/// A settings file in which the alias names the copy, and every folder that a run writes to is the private one.
fs::path IniDaCopia(const TAliases& aliases, const std::string& alias, const std::string& banco,
                    const fs::path& pasta) {
    const fs::path ini = pasta / "WKD.ini";
    SubstituiArquivo(ini, LeArquivoInteiro(aliases.Caminho(), true));
    const TAliases copia(ini);
    const std::string arquivo = SemServidor(banco);
    const auto nome = arquivo.find_last_of("/\\") + 1;
    for (const char* chave : {"Path", "CAMINHO"}) copia.INIGravaString(alias, chave, arquivo.substr(0, nome));
    for (const char* chave : {"DataBase", "BANCO"}) copia.INIGravaString(alias, chave, arquivo.substr(nome));
    if (!aliases.INILeString(alias, "RELATORIO").empty()) {
        fs::create_directory(pasta / "Relatorios");
        copia.INIGravaString(alias, "RELATORIO", TextoDoCaminho(pasta / "Relatorios"));
    }
    return ini;
}

class TExecucaoDoEnsaio {
  public:
    TExecucaoDoEnsaio(THBNConnection& conexao, const TPedidoDeEnsaio& pedido, const TAcompanha& ouvinte)
        : conexao_(conexao),
          pedido_(pedido),
          acompanha_([&ouvinte](const TProgresso& progresso) {
              TInterrupcao::Confere();
              ouvinte(progresso);
          }),
          servidor_(CriaServidorDeBackup(conexao)),
          privada_(pedido.opcoes.temporaria),
          copia_(*servidor_,
                 servidor_->NomeDaCopia("_ensaio_" + Troca(FormataDataHora(Agora(), "hh:mm:ss"), ":", ""))) {}

    TEnsaio Executa() {
        ensaio_.usuarios = ContaUsuariosOnline(conexao_).value_or(0);
        Copia();
        Atualiza();
        ensaio_.rejeitadas = ListaRejeitadas(privada_.Caminho());
        if (pedido_.mantem) {
            copia_.Fica();
            ensaio_.banco = copia_.Banco();
        }
        return std::move(ensaio_);
    }

  private:
    void Copia();
    void Atualiza();
    void Corre(TDataModulo& dm);
    void Confere(TDataModulo& dm, const std::vector<TDesvio>& antes);
    TOpcoes Opcoes() const;

    THBNConnection& conexao_;
    const TPedidoDeEnsaio& pedido_;
    const TAcompanha acompanha_;
    std::unique_ptr<IServidorDeBackup> servidor_;
    TPastaPassageira privada_;
    TCopiaPassageira copia_;
    TEstado estado_;
    TEnsaio ensaio_;
};

/// The backup goes as soon as there is a copy of it; a server that keeps it itself does not remove it.
void TExecucaoDoEnsaio::Copia() {
    const bool aqui = servidor_->ArquivosAqui();
    std::optional<TPastaPassageira> doBackup;
    if (aqui) doBackup.emplace(pedido_.pasta);
    const fs::path pasta = aqui ? doBackup->Caminho() : pedido_.pasta;
    TBackupFeito feito;
    ensaio_.segundosDoBackup = Segundos([&] {
        feito = FazBackup(conexao_, {pedido_.opcoes.alias, pasta, 0}, acompanha_);
    });
    if (!aqui) ensaio_.backupNoServidor = TextoDoCaminho(feito.arquivo);
    ensaio_.bytesDoBackup = feito.manifesto.tamanho;
    ensaio_.segundosDaRestauracao = Segundos([&] {
        ensaio_.copia = ProvaBackup(conexao_, {feito.arquivo, copia_.Banco(), feito.manifesto}, acompanha_);
    });
    copia_.Existe();
    if (!ensaio_.copia.bom) throw TErroDeBackup("O ensaio parou: " + ensaio_.copia.frase);
}

TOpcoes TExecucaoDoEnsaio::Opcoes() const {
    TOpcoes opcoes = pedido_.opcoes;
    opcoes.medeCommits = true;
    opcoes.pastaPrograma = opcoes.pastaCorrente = opcoes.temporaria = privada_.Caminho();
    return opcoes;
}

/// In the copy nobody is connected: those who are, are so in the database in use.
void TExecucaoDoEnsaio::Atualiza() {
    TTelaDoEnsaio tela(acompanha_);
    TDataModulo dm(TAliases(IniDaCopia(conexao_.Aliases(), pedido_.opcoes.alias, copia_.Banco(), privada_.Caminho())),
                   tela);
    dm.nomeAlias = pedido_.opcoes.alias;
    dm.SQLConnection1.SetAlias(pedido_.opcoes.alias);
    dm.SQLConnection1.Open();
    estado_.usuariosOnline = ContaUsuariosOnline(dm.SQLConnection1).has_value();
    if (ensaio_.usuarios > 0) dm.SQLConnection1.ExecuteDirect("update csenha set flag1 = 0 where flag1 > 0");
    const auto antes = ConfereDicionario(dm, privada_.Caminho());
    ensaio_.bytesAntes = servidor_->TamanhoNoDisco(dm.SQLConnection1);
    ensaio_.segundosDaAtualizacao = Segundos([&] { Corre(dm); });
    ensaio_.bytesDepois = servidor_->TamanhoNoDisco(dm.SQLConnection1);
    if (ensaio_.terminou) Confere(dm, antes);
    dm.SQLConnection1.Close();
}

void TExecucaoDoEnsaio::Corre(TDataModulo& dm) {
    const TOpcoes opcoes = Opcoes();
    TAtualizacao atualizacao(dm, opcoes, estado_);
    ensaio_.terminou = atualizacao.Executa() == TFimDaAtualizacao::Concluida;
    TInterrupcao::Confere();
    ensaio_.evidencia = atualizacao.Evidencia();
    if (!dm.SQLConnection1.Connected()) dm.SQLConnection1.Open();
}

void TExecucaoDoEnsaio::Confere(TDataModulo& dm, const std::vector<TDesvio>& antes) {
    const auto velho = [&](const TDesvio& desvio) {
        return desvio.tipo == "backup-sobra" || desvio.tipo == "linhas-rejeitadas" ||
               std::ranges::any_of(antes, [&](const TDesvio& outro) {
                   return outro.tipo == desvio.tipo && outro.tabela == desvio.tabela && outro.objeto == desvio.objeto;
               });
    };
    for (auto& desvio : ConfereDicionario(dm, privada_.Caminho()))
        if (!velho(desvio)) ensaio_.desvios.push_back(std::move(desvio));
    const auto plano = Planeja(dm, Opcoes(), estado_);
    if (!plano) return;
    for (const auto& tabela : plano->tabelas)
        if (tabela.acao != TAcaoDaTabela::Nada) ensaio_.mudaria.push_back(tabela.nome);
}

std::string Quantos(std::size_t numero, const char* um, const char* varios) {
    return ComMilhares(static_cast<std::int64_t>(numero)) + (numero == 1 ? um : varios);
}

}  // namespace

bool TEnsaio::Muda() const {
    return !evidencia.correcoes.empty() || std::ranges::any_of(evidencia.tabelas, [](const TTabelaRegistrada& tabela) {
        return tabela.acao != TAcaoDaTabela::Nada;
    });
}

bool TEnsaio::Pode() const { return terminou && evidencia.erros.empty() && rejeitadas.empty() && mudaria.empty(); }

std::string TEnsaio::Frase() const {
    if (!terminou) return "não pode atualizar: a atualização da cópia terminou antes da hora; veja os erros";
    if (Pode()) {
        std::string frase = "pode atualizar";
        if (usuarios > 0)
            frase += ", depois que " +
                     Quantos(static_cast<std::size_t>(usuarios), " usuário sair", " usuários saírem") + " do sistema";
        if (!desvios.empty())
            frase += "; ficaria " + Quantos(desvios.size(), " desvio", " desvios") + " do dicionário do pacote";
        return frase;
    }
    std::vector<std::string> porques;
    if (!evidencia.erros.empty()) porques.push_back(Quantos(evidencia.erros.size(), " erro", " erros"));
    if (!rejeitadas.empty())
        porques.push_back(
            Quantos(rejeitadas.size(), " registro ou valor rejeitado", " registros ou valores rejeitados"));
    if (!mudaria.empty())
        porques.push_back(Quantos(mudaria.size(), " tabela ficaria", " tabelas ficariam") + " por terminar");
    return "não deve atualizar ainda: " + Junta(porques, ", ");
}

TEnsaio Ensaia(THBNConnection& conexao, const TPedidoDeEnsaio& pedido, const TAcompanha& acompanha) {
    return TExecucaoDoEnsaio(conexao, pedido, acompanha).Executa();
}

}  // namespace wkd
