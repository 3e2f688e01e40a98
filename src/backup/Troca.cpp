#include "Troca.h"

#include "Backup.h"
#include "Explicacao.h"
#include "dialect/Dialeto.h"
#include "package/Caminho.h"
#include "package/Trava.h"
#include "package/TravaDoBanco.h"
#include "process/Interrupcao.h"
#include "values/Texto.h"

namespace wkd {

namespace {

constexpr const char* kNovo = "_novo";
constexpr const char* kAntes = "_antes";

bool Existe(IServidorDeBackup& servidor, const std::string& banco) {
    try {
        return servidor.Existe(banco);
    } catch (const std::exception&) {
        return false;
    }
}

std::vector<std::string> LinhasDosConectados(TConnection& conexao) {
    std::vector<std::string> linhas;
    for (const TConectado& conectado : Conectados(conexao)) {
        std::string linha = conectado.usuario;
        if (!conectado.computador.empty()) linha += ", de " + conectado.computador;
        if (!conectado.programa.empty()) linha += ", com " + conectado.programa;
        linhas.push_back(linha + ", desde " + conectado.desde);
    }
    return linhas;
}

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
        const auto trava = TravaDoArquivo(conexao_);
        Confere();
        restauracao.veredito = FazNovo();
        ExigeNinguem();
        if (!haviaBanco_)
            NoLugarVazio();
        else if (servidor_->TrocaNomes())
            PorNome();
        else
            PorCopia();
        if (servidor_->Existe(antes_)) restauracao.antigo = antes_;
        return restauracao;
    }

  private:
    void Confere();
    void ExigeNomesLivres();
    void ExigeNinguem();
    TVeredito FazNovo();
    void NoLugarVazio();
    void PorNome();
    void PorCopia();
    void ParaEscritores();
    TBackupFeito CopiaDoAtual();
    void TiraAtual();
    void RestauraNoLugar();
    void DevolveCopia(const TBackupFeito& guardado);
    void ConfereNoLugar();
    void Etapa(const char* texto) { acompanha_({texto, -1}); }

    THBNConnection& conexao_;
    const TPedidoDeRestauracao& pedido_;
    std::unique_ptr<IServidorDeBackup> servidor_;
    const TAcompanha acompanha_;
    TCopiaPassageira novo_;
    const std::string antes_;
    std::optional<TManifesto> manifesto_;
    std::vector<std::unique_ptr<TReserva>> reservas_;
    bool haviaBanco_ = true;
};

bool PedacoFechado(IServidorDeBackup& servidor, const std::string& banco) {
    try {
        return servidor.FechadoParaUm(*servidor.Abre(banco));
    } catch (const TErroBanco&) {  // somebody is in it
        return false;
    }
}

void TTroca::Confere() {
    manifesto_ = LeManifesto(pedido_.arquivo);
    if (servidor_->ArquivosAqui()) ExigeArquivo(pedido_.arquivo, manifesto_, pedido_.alias, acompanha_);
    ExigeNinguem();
    haviaBanco_ = servidor_->Existe(servidor_->BancoEmUso());
    ExigeNomesLivres();
}

/// What a restore that was killed has left is taken away where it is certain that nothing is lost with it: the second
/// name of the database in use, and a new one that was not finished. Without a database in use the old one keeps its
/// other name.
void TTroca::ExigeNomesLivres() {
    if (servidor_->MesmoBanco(antes_)) servidor_->Devolve(antes_);
    if (servidor_->Existe(novo_.Banco()) && PedacoFechado(*servidor_, novo_.Banco())) servidor_->Apaga(novo_.Banco());
    for (const auto& nome : {novo_.Banco(), antes_})
        if ((haviaBanco_ || nome != antes_) && servidor_->Existe(nome))
            throw TErroDeBackup(TFalha::BancoExistente,
                                "Já existe " + nome +
                                    ", de uma restauração anterior. Confira se ainda é preciso; "
                                    "apague-o, ou mude-lhe o nome, e repita.");
}

/// A database that does not open any more has nobody in it, and is what the way back is for.
void TTroca::ExigeNinguem() {
    if (!conexao_.Connected()) {
        try {
            conexao_.Open();
        } catch (const TErroBanco& erro) {
            for (const TFalha falha : {TFalha::Autenticacao, TFalha::AcessoRemoto, TFalha::EmUso})
                if (erro.Falha() == falha) throw;
            return;
        }
    }
    if (!servidor_->TrocaNomes() && servidor_->FechadoParaUm(conexao_))
        throw TErroDeBackup(TFalha::BancoFechado, LugarFechado(conexao_));
    const auto conectados = LinhasDosConectados(conexao_);
    if (conectados.empty()) return;
    throw TErroDeBackup(TFalha::UsuariosConectados,
                        "Há " + std::to_string(conectados.size()) +
                            " conexões ao banco. Feche o sistema em todas as estações e repita:\n" +
                            Junta(conectados, "\n"));
}

TVeredito TTroca::FazNovo() {
    ExigeEspacoParaCopia(*servidor_, pedido_.arquivo, manifesto_);
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
        return ConfereNoLugar();
    }
    RestauraNoLugar();
}

/// Compared again: it is another restore than the one that was looked at before.
void TTroca::RestauraNoLugar() {
    const std::string emUso = servidor_->BancoEmUso();
    servidor_->Restaura(pedido_.arquivo, emUso, acompanha_);
    const TVeredito veredito = ConfereCopia(*servidor_, emUso, manifesto_, acompanha_);
    if (veredito.bom) return;
    servidor_->Apaga(emUso);
    throw TErroDeBackup(veredito.frase + "\n" + Junta(veredito.achados, "\n"));
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

/// Until the drop nobody writes into a table: what was entered behind the copy would be in neither of the two.
void TTroca::ParaEscritores() {
    for (const auto& tabela : conexao_.NomesDeTabelas()) reservas_.push_back(conexao_.Reserva(tabela));
}

TBackupFeito TTroca::CopiaDoAtual() {
    Etapa("Guardando o banco em uso");
    ParaEscritores();
    TBackupFeito feito = FazBackup(conexao_, {pedido_.alias, pedido_.pasta, 0}, acompanha_);
    const TVeredito veredito = ProvaBackup(conexao_, {feito.arquivo, antes_}, acompanha_);
    if (veredito.bom && feito.manifesto.depois.empty()) return feito;
    servidor_->Apaga(antes_);
    throw TErroDeBackup("O banco em uso não pôde ser guardado antes da troca, e ficou como estava. " + veredito.frase);
}

/// The copy of the one in use goes again only when that is certain to be there still.
void TTroca::TiraAtual() {
    const std::string emUso = servidor_->BancoEmUso();
    try {
        ExigeNinguem();
        Etapa("Trocando os bancos");
        reservas_.clear();
        conexao_.Close();
        servidor_->Apaga(emUso);
    } catch (...) {
        reservas_.clear();
        if (Existe(*servidor_, emUso)) servidor_->Apaga(antes_);
        throw;
    }
}

/// From the drop on the one that was in use is whole as "_antes", whatever happens here.
void TTroca::PorCopia() {
    const TBackupFeito guardado = CopiaDoAtual();
    TiraAtual();
    try {
        RestauraNoLugar();
    } catch (...) {
        DevolveCopia(guardado);
        throw;
    }
}

void TTroca::DevolveCopia(const TBackupFeito& guardado) {
    const std::string emUso = servidor_->BancoEmUso();
    try {
        if (servidor_->Existe(emUso)) servidor_->Apaga(emUso);
        servidor_->Restaura(guardado.arquivo, emUso, [](const TProgresso&) {});
        servidor_->Apaga(antes_);
    } catch (const std::exception& erro) {
        throw TErroDeBackup("O banco em uso não está no lugar. Ele está, inteiro, em " + antes_ + ", e no backup " +
                            TextoDoCaminho(guardado.arquivo) + ": dê-lhe o nome de volta, ou restaure esse backup.\n" +
                            ExplicaFalha(erro));
    }
}

}  // namespace

TRestauracao RestauraNaOriginal(THBNConnection& conexao, const TPedidoDeRestauracao& pedido,
                                const TAcompanha& acompanha) {
    return TTroca(conexao, pedido, acompanha).Executa();
}

std::string LugarFechado(THBNConnection& conexao) {
    const auto servidor = CriaServidorDeBackup(conexao);
    const std::string emUso = servidor->BancoEmUso(), antes = servidor->NomeDaCopia(kAntes);
    return "O banco " + emUso +
           " está fechado (shutdown). Se foi uma pessoa que o fechou, que o abra (gfix -online). Senão é o pedaço de "
           "uma restauração que não chegou ao fim: não o use" +
           (Existe(*servidor, antes) ? "; o de antes está, inteiro, em " + antes : "") +
           ". Apague o pedaço, espere o serviço do servidor soltá-lo se for preciso, e repita a restauração.";
}

std::vector<std::string> RestosDeBackup(THBNConnection& conexao) {
    const auto servidor = CriaServidorDeBackup(conexao);
    const std::string novo = servidor->NomeDaCopia(kNovo), antes = servidor->NomeDaCopia(kAntes);
    std::vector<std::string> linhas;
    if (servidor->MesmoBanco(antes))
        linhas.push_back("Uma restauração parou antes da troca: o banco em uso é o de antes, e tem também o nome " +
                         antes + ". A restauração seguinte tira esse nome; não apague nenhum dos dois à mão.");
    else if (!Existe(*servidor, servidor->BancoEmUso()) && Existe(*servidor, antes))
        linhas.push_back(
            "O banco em uso não está no lugar. O que estava em uso antes da última restauração está, "
            "inteiro, em " +
            antes + ": restaure de novo, ou dê a ele o nome de volta.");
    else if (!servidor->TrocaNomes() && PedacoFechado(*servidor, servidor->BancoEmUso()))
        linhas.push_back(LugarFechado(conexao));
    else if (Existe(*servidor, antes))
        linhas.push_back("Há " + antes +
                         ", o banco de antes de uma restauração, ou a sua cópia se ela não chegou à troca. Confira o "
                         "que está em uso; depois apague esse, ou mude-lhe o nome.");
    if (Existe(*servidor, novo))
        linhas.push_back("Uma restauração não chegou ao fim e deixou " + novo +
                         ", se nenhuma está em andamento. Não é o banco em uso: apague esse resto.");
    for (const auto& resto : servidor->CopiasPassageiras())
        linhas.push_back(
            "Há " + resto +
            ", de uma prova ou de um ensaio que não chegou ao fim, ou que deixou a cópia (--mantem). Apague-a "
            "se nenhum está em andamento e ela não é mais precisa.");
    return linhas;
}

}  // namespace wkd
