#include "catalogue/Database.h"

#include "platform/MsgBox.h"
#include "platform/VbError.h"

#include <cstdio>

std::unique_ptr<Connection> gConnection;

const QString KevroConnectionString = QStringLiteral("PROVIDER=MSDASQL;dsn=KEVRO;uid=;pwd=71c92m%rb4hqz$;");

void OpenDatabase()
{
    try {
        gConnection = std::make_unique<Connection>();
        gConnection->CursorLocation = 3;
        gConnection->Open(KevroConnectionString, QString(), QString(), -1);
    } catch (const VbError &e) {
        std::fprintf(stderr, "KEVRO: %s\n", qPrintable(e.description));
        MsgBox(QStringLiteral("Could not connect to the KEVRO Database.  Database may be deleted or moved, network "
                              "may be down or ODBC settings may be incorrect.  Can not continue."),
               vbCritical);
        EndProcess(1);
    }
}

void CloseDatabase()
{
    try {
        if (!gConnection)
            RaiseVbError(VbErr::ObjectNotSet); // no connection to close
        gConnection->Close();
        gConnection.reset();
    } catch (const VbError &) {
        MsgBox(QStringLiteral("Could not disconnect to the KEVRO Database.  Database may be deleted or moved, "
                              "network may be down or ODBC settings may be incorrect.  Can not continue."),
               vbCritical);
        EndProcess(1);
    }
}
