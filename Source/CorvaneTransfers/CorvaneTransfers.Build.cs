using UnrealBuildTool;

public class CorvaneTransfers : ModuleRules
{
	public CorvaneTransfers(ReadOnlyTargetRules Target) : base(Target)
	{
		PCHUsage = ModuleRules.PCHUsageMode.UseExplicitOrSharedPCHs;
		IWYUSupport = IWYUSupport.Full;

		PublicDependencyModuleNames.AddRange(new[] { "Core", "CoreUObject", "Engine", "HTTP", "Corvane" });

		// Whether a handle of OpenRead can be flushed: that of Windows takes the attempt for a mistake.
		if (Target.Platform != UnrealTargetPlatform.Win64)
		{
			PrivateDefinitions.Add("CORVANE_FLUSHES_READ_FILES=1");
		}
		else
		{
			PrivateDefinitions.Add("CORVANE_FLUSHES_READ_FILES=0");
		}
	}
}
