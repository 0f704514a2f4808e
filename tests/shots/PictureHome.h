#pragma once

#include "shell/BrowserStage.h"
#include "shell/IgualadorSimbolos.h"
#include "shots/ShotStage.h"
#include "support/FluidSpy.h"
#include "support/UserHome.h"

#include <QApplication>

/// A home for the pictures, with rhythms of its own: no picture changes with the library.
class PictureHome {
public:
    PictureHome()
    {
        FluidSpy::reset();
        qputenv("TZ", "America/Argentina/Buenos_Aires");
        qputenv("VELTA_CONTENT_URL", "");
        home_.installBank();
        TestRhythm rock{.id = "rock",
                        .name = "Rock lento",
                        .style = "popular",
                        .layers = {layerOf("bateria", "rock", "Percusión (batería)", "gm_drums"),
                                   layerOf("bajo", "rock", "Bajo", "gm_33")}};
        for (const LoopLayer& layer : rock.layers) {
            for (const LoopSection section : {LoopSection::Intro, LoopSection::Normal,
                                              LoopSection::Intermedio, LoopSection::Final}) {
                for (int variant = 1; variant <= 3; ++variant)
                    rock.variants.append(variantOf(layer.id, section, variant, 2));
            }
        }
        writeBytes(home_.filePath("resources/loops/installed/rock.content.json"), rock.package());
    }

    static void prepareOnce()
    {
        qApp->installEventFilter(new ovelin::IgualadorSimbolos(qApp));
        ShotStage::prepareApplication();
    }

private:
    UserHome home_;
};
