#include "commands/Comandos.h"

#include <chrono>
#include <iostream>

#include "Backup.h"
#include "Explicacao.h"
#include "ServidorDeBackup.h"
#include "Troca.h"
#include "commands/LinhaDoTerminal.h"
#include "commands/Preferencias.h"
#include "commands/TextoQt.h"
#include "package/Caminho.h"
#include "package/TravaDoBanco.h"
#include "process/EscritaSegura.h"
#include "process/Terminal.h"
#include "report/PlanoEmTexto.h"

namespace wkd {

namespace {

/// The progress as the terminal's last line; nothing where there is no terminal.
class TAndamentoNoTerminal {
  public:
    TAcompanha Acompanha() {
        return [this](const TProgresso& progresso) {
            const auto agora = std::chrono::steady_clock::now();
            if (agora < proxima_) return;
            proxima_ = agora + std::chrono::milliseconds(200);
            linha_.Mostra(progresso.texto +
                          (progresso.percentual < 0 ? "" : " (" + std::to_string(progresso.percentual) + "%)"));
        };
    }

  private:
    TLinhaDoTerminal linha_;
    std::chrono::steady_clock::time_point proxima_{};
};

TCodigoDeSaida ComExplicacao(const std::function<TCodigoDeSaida()>& trabalho) {
    try {
        return trabalho();
    } catch (const std::exception& erro) {
        EscreveNosErros(ExplicaFalha(erro));
        return TCodigoDeSaida::Encerrada;
    }
}

void EscreveVeredito(const TVeredito& veredito) {
    for (const auto& achado : veredito.achados) EscreveNosErros(achado);
    std::cout << veredito.frase << std::endl;
}

void DizRestos(THBNConnection& conexao) {
    for (const auto& linha : RestosDeBackup(conexao)) EscreveNosErros("Aviso: " + linha);
}

/// The same alias may name another company's database in another installation.
void DizSeVeioDeOutroLugar(const std::string& emUso, const std::filesystem::path& arquivo) {
    const auto manifesto = LeManifesto(arquivo);
    if (manifesto && manifesto->banco != emUso)
        EscreveNosErros("Aviso: o backup é de " + manifesto->banco + ", de " + manifesto->quando +
                        "; o banco em uso é " + emUso + ".");
}

/// What became of other backups.
void DizOutros(const TBackupFeito& feito) {
    for (const auto& resto : feito.restos)
        EscreveNosErros("Aviso: um backup que não chegou ao fim, se nenhum está em andamento, deixou " +
                        TextoDoCaminho(resto) + ". Apague esse resto.");
    for (const auto& apagado : feito.apagados)
        std::cout << "Apagado, por ser mais antigo: " << TextoDoCaminho(apagado) << '\n';
    for (const auto& antigo : feito.naoApagados)
        EscreveNosErros("Aviso: o backup antigo " + TextoDoCaminho(antigo) +
                        " não pôde ser apagado. Confira a permissão.");
}

void DizFeito(const TBackupFeito& feito, const std::string& alias, bool aqui) {
    std::cout << "Backup feito: " << TextoDoCaminho(feito.arquivo);
    if (aqui)
        std::cout << " (" << TamanhoEmTexto(feito.manifesto.tamanho) << ")";
    else
        std::cout << ", no servidor, que o leu até o fim";
    std::cout << "\nSó vale depois de provado: AtualizaWKD --prova-backup \"" << TextoDoCaminho(feito.arquivo) << '"'
              << (aqui ? "" : " \"" + alias + "\"") << std::endl;
}

std::string AliasDaProva(const TPedeProva& pedido) {
    if (!pedido.alias.empty()) return pedido.alias;
    if (const auto manifesto = LeManifesto(pedido.arquivo)) return manifesto->alias;
    std::error_code semErro;
    if (!std::filesystem::exists(pedido.arquivo, semErro))
        throw TErroDeBackup("O arquivo de backup " + TextoDoCaminho(pedido.arquivo) +
                            " não existe. Confira o nome e repita.");
    throw TErroDeBackup("Falta o arquivo " + TextoDoCaminho(CaminhoDoManifesto(pedido.arquivo)) +
                        ", que diz de que banco é o backup. Dê o alias: --prova-backup ARQUIVO ALIAS.");
}

/// Whoever runs the command answers at the terminal.
bool Confirma(const std::string& pergunta) {
    if (!EhTerminal(kEntrada)) return false;
    std::cout << pergunta << " [s/N] " << std::flush;
    const std::string resposta = LeLinha();
    return resposta == "s" || resposta == "S" || resposta == "sim";
}

TCodigoDeSaida Restaura(const TAmbiente& ambiente, const TPedeRestaura& pedido) {
    TPreferencias preferencias;
    THBNConnection conexao{TAliases(LocalizaIni(ambiente.locais))};
    conexao.SetAlias(pedido.alias);
    const std::string banco = conexao.RetornaDadosConexao().Texto();
    const std::string pergunta = "Pôr o backup " + TextoDoCaminho(pedido.arquivo) + " no lugar do banco em uso, " +
                                 banco + "? O que está nele desde o backup fica só na cópia guardada.";
    DizSeVeioDeOutroLugar(banco, pedido.arquivo);
    if (!pedido.sim && !Confirma(pergunta)) {
        EscreveNosErros("Nada foi feito. Sem ninguém para responder, confirme com --sim.");
        return TCodigoDeSaida::Encerrada;
    }
    DizRestos(conexao);
    if (const auto quem = QuemAtualiza(conexao)) throw TOutraAtualizacao(*quem);
    TRestauracao restauracao;
    {
        TAndamentoNoTerminal andamento;
        const auto pasta = PastaDeBackup(ambiente, preferencias, conexao);
        restauracao = RestauraNaOriginal(conexao, {pedido.alias, pedido.arquivo, pasta}, andamento.Acompanha());
    }
    EscreveVeredito(restauracao.veredito);
    std::cout << "O banco em uso é agora o do backup: " << banco << '\n';
    if (!restauracao.antigo.empty())
        std::cout << "O de antes está guardado, inteiro, em " << restauracao.antigo
                  << ". Apague-o quando não for mais preciso." << std::endl;
    return TCodigoDeSaida::Sucesso;
}

TCodigoDeSaida CodigoDoEnsaio(const TEnsaio& ensaio) {
    if (!ensaio.terminou) return TCodigoDeSaida::Encerrada;
    if (!ensaio.Pode() || !ensaio.desvios.empty()) return TCodigoDeSaida::ComAchados;
    return ensaio.Muda() ? TCodigoDeSaida::ComMudancas : TCodigoDeSaida::Sucesso;
}

}  // namespace

std::filesystem::path PastaDeBackup(const TAmbiente& ambiente, TPreferencias& preferencias, THBNConnection& conexao) {
    if (!CriaServidorDeBackup(conexao)->ArquivosAqui()) return {};
    if (const QString lembrada = preferencias.Le("edCaminhoBackup").trimmed(); !lembrada.isEmpty())
        return Caminho(lembrada);
    const auto pasta = ambiente.pastaPrograma / "Backup";
    try {
        if (!std::filesystem::exists(pasta)) CriaPastaComo(pasta, ambiente.pastaPrograma);
    } catch (const std::system_error&) {  // said by whoever writes there
    }
    return pasta;
}

TCodigoDeSaida ComandoBackup(const TAmbiente& ambiente, const TPedeBackup& pedido) {
    return NoAlias(ambiente, pedido.alias, [&](TDataModulo& dm, const TEstado&) {
        return ComExplicacao([&] {
            TPreferencias preferencias;
            const bool aqui = CriaServidorDeBackup(dm.SQLConnection1)->ArquivosAqui();
            auto pasta = pedido.pasta;
            if (pasta.empty()) pasta = PastaDeBackup(ambiente, preferencias, dm.SQLConnection1);
            if (aqui) pasta = std::filesystem::absolute(pasta);
            DizRestos(dm.SQLConnection1);
            TBackupFeito feito;
            {
                TAndamentoNoTerminal andamento;
                feito = FazBackup(dm.SQLConnection1, {pedido.alias, pasta, pedido.guarda}, andamento.Acompanha());
            }
            if (!pedido.pasta.empty() && aqui) preferencias.Grava("edCaminhoBackup", QCaminho(pasta));
            DizOutros(feito);
            if (!aqui && pedido.guarda > 0)
                EscreveNosErros(
                    "Aviso: --guarda não apaga nada aqui: o arquivo está no servidor, que não apaga "
                    "arquivos. Apague lá os backups antigos.");
            DizFeito(feito, pedido.alias, aqui);
            return TCodigoDeSaida::Sucesso;
        });
    });
}

TCodigoDeSaida ComandoProva(const TAmbiente& ambiente, const TPedeProva& pedido) {
    return ComExplicacao([&] {
        const std::string alias = AliasDaProva(pedido);
        return NoAlias(ambiente, alias, [&](TDataModulo& dm, const TEstado&) {
            return ComExplicacao([&] {
                DizRestos(dm.SQLConnection1);
                TVeredito veredito;
                {
                    TAndamentoNoTerminal andamento;
                    veredito = ProvaBackup(dm.SQLConnection1, {pedido.arquivo, ""}, andamento.Acompanha());
                }
                EscreveVeredito(veredito);
                return veredito.bom ? TCodigoDeSaida::Sucesso : TCodigoDeSaida::ComErros;
            });
        });
    });
}

TCodigoDeSaida ComandoRestaura(const TAmbiente& ambiente, const TPedeRestaura& pedido) {
    return ComExplicacao([&] {
        try {
            return Restaura(ambiente, pedido);
        } catch (const TErroConfiguracao& erro) {
            EscreveNosErros(erro.what());
            return TCodigoDeSaida::SemConexao;
        }
    });
}

TCodigoDeSaida ComandoEnsaio(const TAmbiente& ambiente, const TPedeEnsaio& pedido) {
    if (!TemAsTabelas(ambiente, pedido.pacote, pedido.escolhas)) return TCodigoDeSaida::Encerrada;
    return NoAlias(ambiente, pedido.alias, [&](TDataModulo& dm, const TEstado&) {
        return ComExplicacao([&] {
            TPreferencias preferencias;
            TPedidoDeEnsaio ensaiado{OpcoesDoComando(ambiente, pedido.alias, pedido.pacote, pedido.escolhas),
                                     PastaDeBackup(ambiente, preferencias, dm.SQLConnection1), pedido.mantem};
            DizRestos(dm.SQLConnection1);
            TEnsaio ensaio;
            {
                TAndamentoNoTerminal andamento;
                ensaio = Ensaia(dm.SQLConnection1, ensaiado, andamento.Acompanha());
            }
            std::cout << (pedido.json ? EnsaioEmJson(ensaio) : EnsaioEmTexto(ensaio)) << std::flush;
            return CodigoDoEnsaio(ensaio);
        });
    });
}

}  // namespace wkd
