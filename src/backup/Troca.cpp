#include "Troca.h"

#include "Backup.h"
#include "package/Caminho.h"
#include "process/Interrupcao.h"
#include "run/TravaDoBanco.h"
#include "values/Texto.h"

namespace wkd {

namespace {

constexpr const char* kNovo = "_novo";
constexpr const char* kAntes = "_antes";

class TTroca {
  public:
    TTroca(THBNConnection& conexao, const TPedidoDeRestauracao& pedido, const TAcompanha& ouvinte)
        : conexao_(conexao),
          pedido_(pedido),
          servidor_(CriaServidorDeBackup(conexao)),
          acompanha_([&ouvinte](const TProgresso& progresso) {
              TInterrupcao::Confere();
              ouvinte(progresso);
          }),
          novo_(*servidor_, servidor_->NomeDaCopia(kNovo)),
          antes_(servidor_->NomeDaCopia(kAntes)) {}

    TRestauracao Executa() {
        TRestauracao restauracao;
        Confere();
        restauracao.veredito = FazNovo();
        ExigeNinguem();
        if (!haviaBanco_)
            NoLugarVazio();
        else if (servidor_->TrocaNomes())
            PorNome();
        else
            PorCopia();
        if (haviaBanco_) restauracao.antigo = antes_;
        return restauracao;
    }

  private:
    void Confere();
    void ExigeNinguem();
    TVeredito FazNovo();
    void NoLugarVazio();
    void PorNome();
    void PorCopia();
    TBackupFeito CopiaDoAtual();
    void ConfereNoLugar();
    void Etapa(const char* texto) { acompanha_({texto, -1}); }

    THBNConnection& conexao_;
    const TPedidoDeRestauracao& pedido_;
    std::unique_ptr<IServidorDeBackup> servidor_;
    const TAcompanha acompanha_;
    TCopiaPassageira novo_;
    const std::string antes_;
    std::optional<TManifesto> manifesto_;
    bool haviaBanco_ = true;
};

void TTroca::Confere() {
    manifesto_ = LeManifesto(pedido_.arquivo);
    if (servidor_->ArquivosAqui()) ExigeArquivo(pedido_.arquivo, manifesto_, pedido_.alias, acompanha_);
    ExigeNinguem();
    haviaBanco_ = servidor_->Existe(servidor_->BancoEmUso());
    for (const auto& nome : {novo_.Banco(), antes_})
        if (servidor_->Existe(nome))
            throw TErroDeBackup("Já existe " + nome +
                                ", de uma restauração anterior. Confira se ainda é preciso; "
                                "apague-o, ou mude-lhe o nome, e repita.");
}

/// A database that does not open any more has nobody in it, and is what the way back is for.
void TTroca::ExigeNinguem() {
    if (!conexao_.Connected()) {
        try {
            conexao_.Open();
        } catch (const TErroBanco& erro) {
            const bool emUso = std::string_view(erro.what()).find("already opened") != std::string_view::npos;
            if (erro.Falha() == TFalha::Autenticacao || emUso) throw;
            return;
        }
    }
    const auto conectados = servidor_->Conectados();
    if (conectados.empty()) return;
    throw TErroDeBackup("Há " + std::to_string(conectados.size()) +
                        " conexões ao banco. Feche o sistema em todas as estações e repita:\n" +
                        Junta(conectados, "\n"));
}

TVeredito TTroca::FazNovo() {
    servidor_->Restaura(pedido_.arquivo, novo_.Banco(), acompanha_);
    novo_.Existe();
    const TVeredito veredito = ConfereCopia(*servidor_, novo_.Banco(), manifesto_, acompanha_);
    if (veredito.bom) return veredito;
    throw TErroDeBackup("O banco em uso ficou como estava. " + veredito.frase + "\n" + Junta(veredito.achados, "\n"));
}

void TTroca::ConfereNoLugar() {
    Etapa("Conferindo o banco restaurado");
    conexao_.Open();
    conexao_.ExisteTabela("SARQUIVO");
    conexao_.Close();
}

void TTroca::NoLugarVazio() {
    conexao_.Close();
    if (servidor_->TrocaNomes()) {
        servidor_->PoeNoLugar(novo_.Banco(), "");
        novo_.Fica();
    } else {
        servidor_->Restaura(pedido_.arquivo, servidor_->BancoEmUso(), acompanha_);
    }
    ConfereNoLugar();
}

void TTroca::PorNome() {
    Etapa("Trocando os bancos");
    conexao_.Close();
    try {
        servidor_->PoeNoLugar(novo_.Banco(), antes_);
        novo_.Fica();
        ConfereNoLugar();
    } catch (...) {
        conexao_.Close();
        servidor_->Devolve(antes_);
        throw;
    }
}

TBackupFeito TTroca::CopiaDoAtual() {
    Etapa("Guardando o banco em uso");
    TBackupFeito feito = FazBackup(conexao_, {pedido_.alias, pedido_.pasta, 0}, acompanha_);
    const TVeredito veredito = ProvaBackup(conexao_, {feito.arquivo, antes_}, acompanha_);
    if (veredito.bom && feito.manifesto.depois.empty()) return feito;
    servidor_->Apaga(antes_);
    throw TErroDeBackup("O banco em uso não pôde ser guardado antes da troca, e ficou como estava. " + veredito.frase);
}

/// From the drop on the one that was in use is whole as "_antes", whatever happens here.
void TTroca::PorCopia() {
    const TBackupFeito guardado = CopiaDoAtual();
    ExigeNinguem();
    Etapa("Trocando os bancos");
    const std::string emUso = servidor_->BancoEmUso();
    conexao_.Close();
    servidor_->Apaga(emUso);
    try {
        servidor_->Restaura(pedido_.arquivo, emUso, acompanha_);
        ConfereNoLugar();
    } catch (...) {
        conexao_.Close();
        if (servidor_->Existe(emUso)) servidor_->Apaga(emUso);
        servidor_->Restaura(guardado.arquivo, emUso, [](const TProgresso&) {});
        servidor_->Apaga(antes_);
        throw;
    }
}

bool Existe(IServidorDeBackup& servidor, const std::string& banco) {
    try {
        return servidor.Existe(banco);
    } catch (const std::exception&) {
        return false;
    }
}

}  // namespace

TRestauracao RestauraNaOriginal(THBNConnection& conexao, const TPedidoDeRestauracao& pedido,
                                const TAcompanha& acompanha) {
    return TTroca(conexao, pedido, acompanha).Executa();
}

std::vector<std::string> RestosDeBackup(THBNConnection& conexao) {
    const auto servidor = CriaServidorDeBackup(conexao);
    const std::string novo = servidor->NomeDaCopia(kNovo), antes = servidor->NomeDaCopia(kAntes);
    std::vector<std::string> linhas;
    if (Existe(*servidor, antes))
        linhas.push_back("O banco que estava em uso antes da última restauração está, inteiro, em " + antes +
                         (Existe(*servidor, servidor->BancoEmUso())
                              ? ". Confira o que está em uso; depois apague o antigo, ou mude-lhe o nome."
                              : "; o banco em uso não está no lugar. Restaure de novo, ou dê a ele o nome de volta."));
    if (Existe(*servidor, novo))
        linhas.push_back("Uma restauração não chegou ao fim e deixou " + novo +
                         ". O banco em uso não foi tocado por ela. Apague esse resto.");
    for (const auto& resto : servidor->CopiasPassageiras())
        linhas.push_back("Uma prova ou um ensaio não chegou ao fim e deixou " + resto + ". Apague esse resto.");
    return linhas;
}

}  // namespace wkd
