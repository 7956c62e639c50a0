// The texts in Japanese, in UTF-8. Sorted by key; the English table has the same rows.
//
// Where the word order differs, all arguments of a text are named by position. The columns of
// listings are the same in both languages, since scripts cut lines by them.

#include "messages/interface/message_keys.h"
#include "messages/src/catalogues.h"

namespace messages {

constinit const MessageEntry g_japaneseEntries[messageCount] = {
    {MessageKey_OutOfMemory, "メモリが足りません"},
    {MessageKey_NotArchiveFormat, "'%s' はアーカイブ形式ではありません"},
    {MessageKey_MalformedArchive, "'%s': アーカイブが壊れています: %s"},
    {MessageKey_WriteError, "ファイル '%s' に書き込めません : %s"},
    {MessageKey_MemberNotPresent, "'%s' はアーカイブ '%s' に存在しません"},
    {MessageKey_ArchiveNotFound, "アーカイブ '%s' が見つかりません : %s"},
    {MessageKey_FileDoesNotExist, "ファイル '%s' は存在しません"},
    {MessageKey_CannotOpenFile, "ファイル '%s' を開けません : %s"},
    {MessageKey_ReadError, "ファイル '%s' を読み込めません : %s"},
    {MessageKey_FileAlreadyExists, "'%s' は既に存在するため、抽出しません"},
    {MessageKey_UnrecognizedLetterOption, "オプション '%c' を認識できません"},
    {MessageKey_NoArchiveSpecified, "アーカイブが指定されていません"},
    {MessageKey_ActionRequired, "アクション -[%s] のいずれか 1 つを指定する必要があります"},
    {MessageKey_OneActionOnly, "指定できるアクションオプションは 1 つだけです"},
    {MessageKey_PositionNotFound, "位置 '%s' が見つかりません"},
    {MessageKey_FileNameTooLong, "ファイル名 '%s' はこのファイルシステムには長すぎます"},
    {MessageKey_ExtractWriteError, "ファイル '%s' に書き込めません : %s"},
    {MessageKey_MissingOptionArgument, "'%s' の引数がありません"},
    {MessageKey_CannotDeleteVariant,
     "'%2$s' が '%1$s' のバリアントであるため、'%1$s' を削除できません"},
    {MessageKey_NoCompatibleBase,
     "シンボルに互換性のあるベースメンバーがないため、バリアント '%s' を挿入できません"},
    {MessageKey_IncompatibleAttributes, "ビルド属性に互換性がないため、'%s' を挿入できません"},
    {MessageKey_CannotReplaceWithVariant,
     "新旧のバージョン間でシンボルに互換性がなく、これに依存するバリアントメンバー ('%2$s') "
     "があるため、'%1$s' を置き換えられません"},
    {MessageKey_UnrecognizedLongOption, "ロングオプション '%s' を認識できません"},
    {MessageKey_ContainsNonElfObject,
     "アーカイブ '%s' に ELF 以外のオブジェクト '%s' が含まれています"},
    {MessageKey_BadErrorMessageList,
     "コマンド %2$s のエラーメッセージリスト %1$s が正しくありません\n"},
    {MessageKey_EmptyViaFile, "via ファイル '%s' は空です"},
    {MessageKey_AttributesAgainstName,
     "アーカイブメンバーのビルド属性がアーカイブ名と一致していません"},
    {MessageKey_NoSymbolTable, "アーカイブ '%s' にはシンボルテーブルがありません"},
    {MessageKey_CreatingArchive, "アーカイブ '%s' を作成しています"},
    {MessageKey_NoBaseVariant,
     "アーカイブメンバー '%s' のマイナーバリアントにベースバリアントが含まれていません"},
    {MessageKey_NonElfObject, "ELF 以外のオブジェクト '%s' をアーカイブ '%s' に追加しています"},
    {MessageKey_MultipleBaseVariants,
     "アーカイブメンバー '%s' のマイナーバリアントに複数のベースバリアントが含まれています"},
    {MessageKey_AttributesNotDecorable,
     "'%2$s' で始まるマイナーバリアントグループのアーカイブメンバー '%1$s' "
     "の属性の差異に、シンボル修飾で表現できない属性が含まれています"},
    {MessageKey_CommonAttributesIncompatible,
     "'%s' で始まるマイナーバリアントグループの共通属性は、ライブラリの属性と互換性がありません。"},
    {MessageKey_MemberAttributesIncompatible, "マイナーバリアントのメンバーオブジェクト '%s' "
                                              "の属性は、ライブラリの属性と互換性がありません。"},
    {MessageKey_IdenticalVariants,
     "アーカイブメンバー '%s' のマイナーバリアントに、属性サフィックスが "
     "'%s' の同一のバリアントが含まれています"},
    {MessageKey_UsageFormat, "\n"
                             "アーカイブ作成・保守ツール\n\n"
                             "コマンドの形式:\n\n"
                             "%s options archive [ file_list ]\n\n"},
    {MessageKey_UsageWildcards, "file_list にはワイルドカード '%c' および '*' を使用できます\n\n"},
    {MessageKey_UsageEditOptions,
     "オプション:\n\n"
     " -r         <file_list> のファイルを挿入し、同じ名前の既存のメンバーを置き換えます。\n"
     " -d         <file_list> のメンバーを削除します。\n"
     " -x         <file_list> のメンバーを抽出し、同じ名前のファイルに保存します。\n"
     " -m         <file_list> のファイルを移動します。\n"
     " -p         ファイルを標準出力に出力します。\n"
     " -a pos     <pos> という名前のファイルの後ろにファイルを挿入または移動します。\n"
     " -b pos     <pos> という名前のファイルの前にファイルを挿入または移動します。\n"
     " -u         古いファイルだけを更新します。-r と共に使用します。\n\n"},
    {MessageKey_UsageOtherOptions,
     " -n         オブジェクトアーカイブにシンボルテーブルを追加しません。\n"
     " -s         アーカイブのシンボルテーブルを強制的に再生成します。\n"
     " -t         アーカイブの目次を出力します。\n"
     "--zs        シンボルテーブルを表示します。\n"
     "--zt        アーカイブの内容の要約を表示します (サイズとエントリ)。\n"
     " -c         新しいアーカイブを作成するときの警告を抑止します。\n"
     " -C         抽出時に既存のファイルを上書きしません。\n"
     " -T         ファイル名をシステムの最大長に切り詰めます。\n"
     " -v         詳細な出力を行います。\n"
     "--create    新しいアーカイブを強制的に作成します。\n"
     "--via file  via ファイルから追加の引数を読み込みます。\n"
     "--sizes     各メンバーのサイズとライブラリの合計を一覧表示します。\n"
     "--entries   ENTRY ポイントを含むセクションを一覧表示します。\n"
     "--vsn       現在の Tomex のバージョンを出力します。\n"
     "--help      このメッセージを出力します。\n\n"},
    {MessageKey_UsageExamples, "例:\n\n"
                               "        %s -r  mylib.a obj1 obj2 obj3...\n"
                               "        %s -x  mylib.a %csort*\n"
                               "        %s -d  mylib.a hash.o\n"
                               "        %s -tv ansilib.a\n\n"},
    {MessageKey_ListName, "%s\n"},
    {MessageKey_ListVerbose, "%s%6d/%6d%7u %s %s (オフセット %6d)\n"},
    {MessageKey_ListSymbol, "%-20s 定義元 %-10s オフセット %6d\n"},
    {MessageKey_ExtractedMember, "x - %s\n"},
    {MessageKey_PrintedMember, "\n"
                               "<%s>\n\n"},
    {MessageKey_ReplacedMember, "r - %s\n"},
    {MessageKey_AddedMember, "a - %s\n"},
    {MessageKey_MovedMember, "m - %s\n"},
    {MessageKey_DeletedMember, "d - %s\n"},
    {MessageKey_ListWithAttributes, "%s%6d/%6d%7u %s %s (オフセット %6d, 属性 %s)\n"},
    {MessageKey_SizesRow, "%10u %10u %10u %10u %10u   %s\n"},
    {MessageKey_SizesHeading,
     "\n"
     "      Code    RO Data    RW Data    ZI Data      Debug   オブジェクト名\n"},
    {MessageKey_NoEntryPoints, "ENTRY ポイントは見つかりませんでした。\n"},
    {MessageKey_EntryPoint, "%3$s のセクション %2$s のオフセット %1$d に ENTRY があります\n"},
    {MessageKey_UnknownDiagnosticValue, "不明な診断番号 (%d)"},
    {MessageKey_ReadingMember, "メンバー '%s' を読み込めません : %s"},
    {MessageKey_MalformedArchiveWarning, "'%s': アーカイブが壊れています: %s"},
    {MessageKey_MalformedSymbolTable, "'%s': シンボルテーブルが壊れています"},
    {MessageKey_SeekError, "ファイル '%s' をシークできません : %s"},
    {MessageKey_CloseError, "ファイル '%s' を閉じられません : %s"},
    {MessageKey_DeleteError, "ファイル '%s' を削除できません : %s"},
    {MessageKey_OutputReadOnly, "出力ファイル '%s' は読み取り専用です"},
    {MessageKey_NoMembersForCreate, "--create にアーカイブメンバーが指定されていません"},
    {MessageKey_UnrecognizedOption, "オプション '%s%s' を認識できません。"},
    {MessageKey_MissingArgument, "オプション '%s' の引数がありません。"},
    {MessageKey_ViaFileTooDeep,
     "ファイル '%2$s' で via ファイルの再帰的な取り込みの深さが %1$d に達しました。"},
    {MessageKey_ArgumentNotPermitted, "引数 '%s' はオプション '%s' では使用できません。"},
    {MessageKey_CouldNotOpenViaFile, "via ファイル '%s' を開けませんでした。"},
    {MessageKey_ViaFileReadError, "via ファイル '%s' の読み込み中にエラーが発生しました。"},
    {MessageKey_MalformedViaFile, "via ファイル '%s' の形式が正しくありません。"},
    {MessageKey_ViaFileCommandTooLong,
     "via ファイル '%s' のコマンドが長すぎてバッファに収まりません。"},
    {MessageKey_IntegerOverflow, "オーバーフロー: '%s' は整数に収まりません。"},
    {MessageKey_OldSyntax, "古い構文です。'%s%s%s%s' を使用してください。"},
    {MessageKey_DeprecatedOption, "オプション '%s' は非推奨です。"},
    {MessageKey_CouldNotCloseViaFile, "via ファイル '%s' を閉じられませんでした。"},
    {MessageKey_SelectableArguments, "オプション '%s' では次の引数を選択できます:\n"
                                     " %s"},
    {MessageKey_DeprecatedArgument, "オプション '%2$s' の引数 '%1$s' は非推奨です"},
    {MessageKey_UnexpectedArgument, "オプション '%s%s' に予期しない引数があります"},
    {MessageKey_ConcatenatedArgument, "連結したオプションに引数を指定することはできません: -%s %s"},
    {MessageKey_NullInViaFile,
     "via ファイル '%s' に '\\0' 文字が見つかりました - バイナリファイルの可能性があります。via "
     "ファイルの解析を中止します。"},
    {MessageKey_PossibleMatches, "'%s' に一致する候補には '%s' や '%s' があります。"},
    {MessageKey_RepeatedOption,
     "連結したオプション '-%2$s%3$s%4$s' でオプション '-%1$s' が繰り返されています。"},
    {MessageKey_Banner, "製品: %s\n"
                        "コンポーネント: %s\n"
                        "ツール: %s [%08x]"},
    {MessageKey_BannerShort, "コンポーネント: %s ツール: %s [%08x]"},
    {MessageKey_EngineeringRelease,
     "エンジニアリングリリースです。本番環境では使用しないでください。"},
    {MessageKey_BannerExtraText, "\n"
                                 "%s"},
    {MessageKey_BannerSupplier, "\n"
                                "ソフトウェアの提供元: %s"},
    {MessageKey_BadMessageLocale, "メッセージロケール %s を初期化できませんでした"},
    {MessageKey_GnuLocationColumn, "%s:%u:%u: "},
    {MessageKey_GnuLocationLine, "%s:%u: "},
    {MessageKey_GnuLocationFile, "%s: "},
    {MessageKey_GnuLocationNone, ""},
    {MessageKey_UnknownDiagnosticNumber, "不明な診断番号 %s"},
    {MessageKey_Summary, "%1$s: %3$s %2$d 件、%5$s %4$d 件"},
    {MessageKey_SummaryError, "エラー"},
    {MessageKey_SummaryErrors, "エラー"},
    {MessageKey_SummaryWarning, "警告"},
    {MessageKey_SummaryWarnings, "警告"},
    {MessageKey_IdeInternalFault, "内部エラー: "},
    {MessageKey_IdeFatalError, "致命的なエラー "},
    {MessageKey_IdeError, "エラー "},
    {MessageKey_IdeWarning, "警告 "},
    {MessageKey_IdeRemark, ""},
    {MessageKey_PlainInternalFault, "内部エラー: "},
    {MessageKey_PlainFatalError, "致命的なエラー: "},
    {MessageKey_PlainError, "エラー: "},
    {MessageKey_PlainWarning, "警告: "},
    {MessageKey_PlainRemark, ""},
    {MessageKey_IdeLocationColumn, "%s(%u,%u) : "},
    {MessageKey_IdeLocationLine, "%s(%u) : "},
    {MessageKey_IdeLocationFile, "%s : "},
    {MessageKey_IdeLocationNone, "%s : "},
    {MessageKey_PlainLocationColumn, "\"%s\", %u 行目 (%u 列目): "},
    {MessageKey_PlainLocationLine, "\"%s\", %u 行目: "},
    {MessageKey_PlainLocationFile, "\"%s\": "},
    {MessageKey_PlainLocationNone, ""},
};

} // namespace messages
